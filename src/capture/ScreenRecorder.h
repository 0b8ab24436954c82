#pragma once

#include "capture/ScreenTake.h"
#include "platform/CaptureStream.h"
#include "platform/MovieAsset.h"
#include "platform/SerialQueue.h"

#include <memory>

namespace zivra {

class LiveMovie;

/// Captures a display or windows, with their sound, straight into one movie file. One object is one take.
///
/// What is captured passes one serial queue, "zivra.screen.samples", which everything between a sample
/// and the file is confined to (`LiveMovie`).
class ScreenRecorder final : public ScreenTake {
public:
    using Options = ScreenRecorderOptions;

    /// Nothing starts yet. The services must outlive the object and its tasks.
    ScreenRecorder(Options options, CaptureStreamFactory &streams, MovieServices &movies,
                   SerialQueueFactory &queues);
    ~ScreenRecorder() override;
    ScreenRecorder(const ScreenRecorder &) = delete;
    ScreenRecorder &operator=(const ScreenRecorder &) = delete;

    void setErrorHandler(std::function<void(std::exception_ptr)> handler) override;
    [[nodiscard]] QCoro::Task<> start() override;
    void pause() override;
    void resume() override;
    [[nodiscard]] QCoro::Task<std::optional<QUrl>> stop() override;

private:
    [[nodiscard]] CaptureConfiguration configuration() const;

    Options m_options;
    CaptureStreamFactory &m_streams;
    std::function<void(std::exception_ptr)> m_onError;
    std::shared_ptr<SerialQueue> m_queue;
    std::shared_ptr<LiveMovie> m_movie; ///< used on `m_queue` only
    std::unique_ptr<CaptureStream> m_stream;
};

} // namespace zivra
