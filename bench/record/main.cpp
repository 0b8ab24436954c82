// Records the whole display with a `ScreenRecorder` that is told which windows to leave out, until ended.

#include "capture/ScreenRecorder.h"
#include "desktop/audio/PulseSoundSourceFactory.h"
#include "desktop/media/FFmpegMovieServices.h"
#include "desktop/process/TerminationSignals.h"
#include "desktop/stream/ComposedCaptureStream.h"
#include "desktop/threads/ThreadSerialQueue.h"
#include "desktop/x11/X11Screens.h"
#include "desktop/x11/capture/X11PictureSourceFactory.h"

#include <QCoreApplication>
#include <QStringList>

#include <cstdio>
#include <exception>

namespace {

using namespace zivra;

constexpr auto kUsage = "Usage: zivra-bench-record FILE EXCLUDED-WINDOW...\n";

/// The desktop's parts that a take needs.
struct Services {
    desktop::ThreadSerialQueueFactory queues;
    desktop::X11PictureSourceFactory pictures;
    desktop::PulseSoundSourceFactory sounds{desktop::connectToPulseServer()};
    desktop::ComposedCaptureStreamFactory streams{pictures, sounds};
    desktop::FFmpegMovieServices movies;
};

ScreenRecorderOptions optionsFrom(const QStringList &words)
{
    const Screen screen = desktop::X11Screens().screens().at(0);
    ScreenRecorderOptions options;
    options.filter.displayID = screen.displayID;
    for (const QString &window : words.mid(1)) {
        options.filter.windowIDs.push_back(window.toUInt());
    }
    options.outputSize = screen.frame.size() * screen.backingScaleFactor;
    options.outputURL = QUrl::fromLocalFile(words.front());
    return options;
}

QCoro::Task<> start(ScreenRecorder &recorder)
{
    try {
        co_await recorder.start();
    } catch (const std::exception &error) {
        std::fprintf(stderr, "zivra-bench-record: %s\n", error.what());
        QCoreApplication::exit(1);
    }
}

QCoro::Task<> finish(ScreenRecorder &recorder)
{
    const auto movie = co_await recorder.stop();
    QCoreApplication::exit(movie ? 0 : 1);
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList words = QCoreApplication::arguments().mid(1);
    if (words.isEmpty()) {
        std::fputs(kUsage, stderr);
        return 2;
    }
    try {
        Services services;
        ScreenRecorder recorder(optionsFrom(words), services.streams, services.movies, services.queues);
        const desktop::TerminationSignals signalsStop([&recorder] { finish(recorder); });
        start(recorder);
        return QCoreApplication::exec();
    } catch (const std::exception &error) {
        std::fprintf(stderr, "zivra-bench-record: %s\n", error.what());
        return 1;
    }
}
