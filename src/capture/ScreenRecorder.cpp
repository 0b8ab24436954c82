#include "capture/ScreenRecorder.h"

#include "capture/LiveMovie.h"
#include "capture/QueueResult.h"

#include <QCoroFuture>

#include <utility>

namespace zivra {

namespace {

QSize wholePixels(const QSizeF &size)
{
    return {static_cast<int>(size.width()), static_cast<int>(size.height())};
}

LiveMovieOptions movieOptions(const ScreenRecorderOptions &options)
{
    return {.url = options.outputURL,
            .pictures = wholePixels(options.outputSize),
            .systemSound = options.captureSystemAudio,
            .microphone = options.microphoneID.has_value()};
}

} // namespace

ScreenRecorder::ScreenRecorder(Options options, CaptureStreamFactory &streams, MovieServices &movies,
                               SerialQueueFactory &queues)
    : m_options(std::move(options)),
      m_streams(streams),
      m_queue(queues.makeSerialQueue("zivra.screen.samples")),
      m_movie(std::make_shared<LiveMovie>(movieOptions(m_options), movies))
{
}

ScreenRecorder::~ScreenRecorder()
{
    m_stream.reset();
    // On its queue, since a sample may be on its way into it.
    m_queue->async([movie = std::move(m_movie)] {});
}

void ScreenRecorder::setErrorHandler(std::function<void(std::exception_ptr)> handler)
{
    m_onError = handler;
    m_movie->setErrorHandler(std::move(handler));
}

QCoro::Task<> ScreenRecorder::start()
{
    auto stream = m_streams.makeStream(m_options.filter, configuration(),
                                       [onError = m_onError](const std::exception_ptr &error) {
                                           if (onError) {
                                               onError(error);
                                           }
                                       });
    const auto handler = [weakMovie = std::weak_ptr(m_movie)](const MediaSample &sample, CaptureOutput type) {
        if (const auto movie = weakMovie.lock()) {
            movie->handle(sample, type);
        }
    };
    stream->addOutput(CaptureOutput::Screen, m_queue, handler);
    if (m_options.captureSystemAudio) {
        stream->addOutput(CaptureOutput::Audio, m_queue, handler);
    }
    if (m_options.microphoneID) {
        stream->addOutput(CaptureOutput::Microphone, m_queue, handler);
    }
    m_stream = std::move(stream);
    // Nothing of this object may be touched afterwards: it may be gone.
    co_await m_stream->startCapture();
}

CaptureConfiguration ScreenRecorder::configuration() const
{
    CaptureConfiguration configuration;
    configuration.outputSize = wholePixels(m_options.outputSize);
    configuration.sourceRect = m_options.sourceRect;
    configuration.minimumFrameInterval = MediaTime::fromFraction(1, 30);
    configuration.queueDepth = 6;
    configuration.showsCursor = true;
    configuration.showsMouseClicks = m_options.showClicks;
    configuration.capturesAudio = m_options.captureSystemAudio;
    configuration.excludesCurrentProcessAudio = true;
    configuration.sampleRate = 48000;
    configuration.channelCount = 2;
    configuration.capturesMicrophone = m_options.microphoneID.has_value();
    configuration.microphoneDeviceID = m_options.microphoneID;
    return configuration;
}

void ScreenRecorder::pause()
{
    m_queue->async([movie = m_movie] { movie->pause(); });
}

void ScreenRecorder::resume()
{
    m_queue->async([movie = m_movie] { movie->resume(); });
}

QCoro::Task<std::optional<QUrl>> ScreenRecorder::stop()
{
    // What is needed lives in the task: the object may be dropped meanwhile.
    const auto queue = m_queue;
    const auto movie = m_movie;
    if (auto stream = std::move(m_stream)) {
        try {
            co_await stream->stopCapture();
        } catch (...) {
            // What was captured is to be saved all the same.
        }
    }
    // After every sample that is queued already.
    const auto finishing = resultFrom(*queue, [movie] { return movie->finish(); });
    const std::optional<QFuture<void>> closing = co_await finishing;
    if (!closing) {
        co_return std::nullopt;
    }
    co_await *closing;
    co_return movie->finishedFile();
}

} // namespace zivra
