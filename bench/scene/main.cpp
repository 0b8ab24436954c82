#include "Scene.h"
#include "ScreenWindow.h"

#include <QGuiApplication>
#include <QStringList>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <exception>
#include <optional>
#include <thread>

namespace {

using namespace zivra::bench;
using Clock = std::chrono::steady_clock;

constexpr int kFramesPerSecond = 30;

volatile std::sig_atomic_t ended = 0;

constexpr auto kUsage =
    "Usage: zivra-bench-scene SCENE               show still, small, scroll or full; print the\n"
    "                                             number of each frame shown, until ended\n"
    "       zivra-bench-scene SCENE --dump N,...  write these frames to stdout, as BGRx\n";

Clock::duration timeOf(int frame)
{
    return std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(frame)) /
           kFramesPerSecond;
}

/// A frame that is late by a whole frame's time is left out.
void show(const Scene &scene)
{
    ScreenWindow window;
    QPainter(&window.picture()).drawImage(0, 0, scene.background());
    scene.draw(window.picture(), 0);
    window.show(window.picture().rect());
    const Clock::time_point start = Clock::now();
    int frame = 0;
    while (ended == 0 && window.isAlive()) {
        std::printf("%d\n", frame);
        while (timeOf(++frame + 1) <= Clock::now() - start) {
        }
        scene.draw(window.picture(), frame);
        std::this_thread::sleep_until(start + timeOf(frame));
        window.show(scene.changing());
    }
}

void dump(const Scene &scene, const QStringList &frames)
{
    QImage picture = scene.background();
    for (const QString &frame : frames) {
        scene.draw(picture, frame.toInt());
        std::fwrite(picture.constBits(), 1, static_cast<std::size_t>(picture.sizeInBytes()), stdout);
    }
}

int run(const QStringList &words)
{
    const auto scene = words.isEmpty() ? std::nullopt : Scene::named(words.front());
    if (scene && words.size() == 1) {
        show(*scene);
    } else if (scene && words.size() == 3 && words.at(1) == QLatin1String("--dump")) {
        dump(*scene, words.at(2).split(QLatin1Char(',')));
    } else {
        std::fputs(kUsage, stderr);
        return 2;
    }
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    // Qt draws the pictures, but opens no window.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    const auto end = [](int) { ended = 1; };
    std::signal(SIGINT, end);
    std::signal(SIGTERM, end);
    try {
        return run(QGuiApplication::arguments().mid(1));
    } catch (const std::exception &error) {
        std::fprintf(stderr, "zivra-bench-scene: %s\n", error.what());
        return 1;
    }
}
