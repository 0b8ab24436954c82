#pragma once

#include "capture/SampleTimeline.h"
#include "platform/CaptureStream.h"
#include "platform/MovieAsset.h"
#include "platform/MovieWriter.h"

#include <QFuture>
#include <QSize>
#include <QUrl>

#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace zivra {

/// What is recorded of a take, and where to.
struct LiveMovieOptions {
    QUrl url;                      ///< a file that does not exist yet; its extension tells the container
    std::optional<QSize> pictures; ///< pixels, even; absent: as large as the first one
    bool systemSound = false;
    bool microphone = false;
};

/// The way of one take's samples into its movie file. Confined to the take's queue: everything but
/// its preparation runs there, one sample at a time in the order they arrive.
///
/// The file begins with the first complete frame, for sound as well as picture: sound before it only tells
/// in which format it comes. A sample that the file cannot take at once is dropped, never queued.
class LiveMovie {
public:
    LiveMovie(LiveMovieOptions options, MovieServices &movies);

    /// Before any sample comes. Called on the queue when the file cannot be begun, and on a thread of
    /// the writer when it can take no more.
    void setErrorHandler(std::function<void(std::exception_ptr)> handler) { m_onError = std::move(handler); }

    void pause() { m_timeline.pause(); }
    void resume() { m_timeline.resume(); }
    [[nodiscard]] bool isPaused() const { return m_timeline.isPaused(); }
    void handle(const MediaSample &sample, CaptureOutput output);
    /// Turns away all further samples and begins to close the file. Absent when there is none to close.
    [[nodiscard]] std::optional<QFuture<void>> finish();
    /// The closed file; absent when it is not usable. Also for whoever waited for `finish()`.
    [[nodiscard]] std::optional<QUrl> finishedFile() const;

private:
    void handleFrame(const MediaSample &frame);
    void handleAudio(const MediaSample &sample, MovieWriterInput *input, std::optional<AudioFormat> &format);
    void setUpWriter(const MediaSample &firstFrame);
    [[nodiscard]] VideoSettings videoSettings(const MediaSample &firstFrame) const;
    void append(const MediaSample &sample, MovieWriterInput *input);
    [[nodiscard]] bool isWriting() const;

    LiveMovieOptions m_options;
    MovieServices &m_movies;
    std::function<void(std::exception_ptr)> m_onError;
    std::unique_ptr<MovieWriter> m_writer; ///< null until the first complete frame
    // These belong to the writer; null where the file has no such track.
    MovieWriterInput *m_videoInput = nullptr;
    MovieWriterInput *m_systemInput = nullptr;
    MovieWriterInput *m_micInput = nullptr;
    // The latest format seen before there was a writer.
    std::optional<AudioFormat> m_systemFormat;
    std::optional<AudioFormat> m_micFormat;
    SampleTimeline m_timeline;
    MediaTime m_lastVideoTime; ///< of the last frame written, on the file's timeline
    bool m_stopped = false;
};

} // namespace zivra
