#pragma once

#include "desktop/media/SampleIntake.h"
#include "desktop/media/WriterWorker.h"
#include "platform/MovieWriter.h"

#include <QPromise>

#include <mutex>
#include <thread>

namespace zivra::desktop {

/// A movie writer on libavformat and libavcodec with one thread of its own for everything slow.
class FFmpegMovieWriter final : public MovieWriter {
public:
    /// `url` is that of a local file.
    FFmpegMovieWriter(const QUrl &url, MovieFileType type);
    /// Prompt while nothing was finished; waits for a finish that is under way.
    ~FFmpegMovieWriter() override;

    MovieWriterInput &addVideoInput(const VideoSettings &settings) override;
    MovieWriterInput &addAudioInput(const AudioSettings &settings) override;
    /// The format must come from this folder's assets; throws `PlatformError` otherwise.
    MovieWriterInput &addPassthroughInput(std::shared_ptr<const TrackFormat> format,
                                          const std::optional<TrackTransform> &transform) override;
    void setInterruptionHandler(std::function<void(std::exception_ptr)> handler) override;
    [[nodiscard]] bool startWriting() override;
    void startSession(MediaTime sourceTime) override;
    [[nodiscard]] Status status() const override;
    [[nodiscard]] std::exception_ptr error() const override;
    [[nodiscard]] QUrl outputURL() const override { return m_url; }
    [[nodiscard]] QFuture<void> finishWriting() override;

private:
    class Input;

    MovieWriterInput &addInput(MediaType type, std::unique_ptr<TrackEncoder> encoder);
    void setOutcome(Status status, std::exception_ptr error);
    void runWorker();

    const QUrl m_url;
    const MovieFileType m_type;
    std::function<void(std::exception_ptr)> m_interruptionHandler;
    SampleIntake m_intake;
    WriterWorker::Tracks m_tracks;
    std::vector<std::unique_ptr<Input>> m_inputs;
    std::unique_ptr<WriterWorker> m_worker;
    QPromise<void> m_finished;
    QFuture<void> m_finishedFuture;
    bool m_sessionStarted = false;
    bool m_finishing = false;

    mutable std::mutex m_outcomeMutex; ///< guards the two below
    Status m_status = Status::Unknown;
    std::exception_ptr m_error;

    std::jthread m_thread;
};

} // namespace zivra::desktop
