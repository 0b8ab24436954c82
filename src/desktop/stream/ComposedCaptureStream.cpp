#include "desktop/stream/ComposedCaptureStream.h"

#include "platform/PlatformError.h"

#include <QCoroFuture>
#include <QCoroTask>
#include <QFuture>
#include <QPromise>

#include <map>
#include <utility>
#include <vector>

namespace zivra::desktop {

namespace {

struct Output {
    std::shared_ptr<SerialQueue> queue;
    std::shared_ptr<const CaptureStream::SampleHandler> handler;
};

using Sources = std::vector<std::unique_ptr<CaptureSource>>;

/// What hands a source's samples on to the queues of its outputs. Runs on the source's thread.
CaptureSource::SampleHandler forwarder(CaptureOutput type, std::vector<Output> outputs)
{
    return [type, outputs = std::move(outputs)](const MediaSample &sample) {
        for (const Output &output : outputs) {
            output.queue->async([handler = output.handler, sample, type] { (*handler)(sample, type); });
        }
    };
}

QList<QFuture<void>> stopAll(const std::weak_ptr<const Sources> &sources)
{
    QList<QFuture<void>> stopping;
    if (const auto running = sources.lock()) {
        for (const auto &source : *running) {
            stopping.append(source->stop());
        }
    }
    return stopping;
}

/// Waits for all of them, whether they succeed or fail.
QCoro::Task<> settled(QList<QFuture<void>> futures)
{
    for (const auto &future : futures) {
        try {
            co_await future;
        } catch (...) { // NOLINT(bugprone-empty-catch): who cares for a failure asks the future itself
        }
    }
}

/// Finishes `promise` when everything runs, or when the picture's failure has stopped the sounds. The sources
/// may be destroyed meanwhile.
QCoro::Task<> reportStart(QPromise<void> promise, QList<QFuture<void>> sounds, QFuture<void> picture,
                          std::weak_ptr<const Sources> sources)
{
    co_await settled(std::move(sounds));
    std::exception_ptr failure;
    try {
        co_await picture;
    } catch (...) {
        failure = std::current_exception();
    }
    if (failure) {
        co_await settled(stopAll(sources));
        promise.setException(failure);
    }
    promise.finish();
}

QCoro::Task<> reportStop(QPromise<void> promise, QList<QFuture<void>> stopping)
{
    co_await settled(std::move(stopping));
    promise.finish();
}

class ComposedCaptureStream final : public CaptureStream {
public:
    ComposedCaptureStream(std::unique_ptr<CaptureSource> picture, SoundSourceFactory &sounds,
                          CaptureConfiguration configuration, StopHandler onStop)
        : m_picture(std::move(picture)),
          m_sounds(sounds),
          m_configuration(std::move(configuration)),
          m_onStop(std::move(onStop))
    {
    }

    void addOutput(CaptureOutput type, std::shared_ptr<SerialQueue> queue, SampleHandler handler) override
    {
        if (m_sources) {
            throw PlatformError(QStringLiteral("The capture has already started."));
        }
        if (type == CaptureOutput::Audio && !m_configuration.capturesAudio) {
            throw PlatformError(QStringLiteral("This capture does not include the computer's sound."));
        }
        if (type == CaptureOutput::Microphone && !m_configuration.capturesMicrophone) {
            throw PlatformError(QStringLiteral("This capture does not include a microphone."));
        }
        m_outputs[type].push_back(
            {std::move(queue), std::make_shared<const SampleHandler>(std::move(handler))});
    }

    QFuture<void> startCapture() override
    {
        if (m_sources) {
            return QtFuture::makeExceptionalFuture(
                std::make_exception_ptr(PlatformError(QStringLiteral("The capture has already started."))));
        }
        m_sources = std::make_shared<Sources>();
        QList<QFuture<void>> sounds;
        if (m_outputs.contains(CaptureOutput::Audio)) {
            const AudioFormat format{m_configuration.sampleRate, m_configuration.channelCount};
            sounds.append(startSound(CaptureOutput::Audio, m_sounds.makeSystemSoundSource(format)));
        }
        if (m_outputs.contains(CaptureOutput::Microphone)) {
            auto microphone = m_sounds.makeMicrophoneSource(m_configuration.microphoneDeviceID);
            sounds.append(startSound(CaptureOutput::Microphone, std::move(microphone)));
        }
        const QFuture<void> picture = start(CaptureOutput::Screen, std::move(m_picture), std::move(m_onStop));

        QPromise<void> promise;
        promise.start();
        QFuture<void> started = promise.future();
        reportStart(std::move(promise), std::move(sounds), picture, m_sources);
        return started;
    }

    QFuture<void> stopCapture() override
    {
        QPromise<void> promise;
        promise.start();
        QFuture<void> stopped = promise.future();
        reportStop(std::move(promise), stopAll(m_sources));
        return stopped;
    }

private:
    QFuture<void> startSound(CaptureOutput type, std::unique_ptr<CaptureSource> sound)
    {
        return start(type, std::move(sound), [](const std::exception_ptr & /*reason*/) {});
    }

    QFuture<void> start(CaptureOutput type, std::unique_ptr<CaptureSource> source,
                        CaptureSource::EndHandler onEnd)
    {
        CaptureSource &started = *m_sources->emplace_back(std::move(source));
        return started.start(forwarder(type, m_outputs[type]), std::move(onEnd));
    }

    std::unique_ptr<CaptureSource> m_picture; ///< until the start
    SoundSourceFactory &m_sounds;
    CaptureConfiguration m_configuration;
    StopHandler m_onStop; ///< until the start
    std::map<CaptureOutput, std::vector<Output>> m_outputs;
    std::shared_ptr<Sources> m_sources; ///< since the start; destroying them stops them
};

} // namespace

std::unique_ptr<CaptureStream> ComposedCaptureStreamFactory::makeStream(
    const ContentFilter &filter, const CaptureConfiguration &configuration, CaptureStream::StopHandler onStop)
{
    return std::make_unique<ComposedCaptureStream>(m_pictures.makePictureSource(filter, configuration),
                                                   m_sounds, configuration, std::move(onStop));
}

} // namespace zivra::desktop
