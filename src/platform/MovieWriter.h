#pragma once

#include "platform/MediaSample.h"
#include "platform/SerialQueue.h"

#include <QFuture>
#include <QString>
#include <QUrl>

#include <array>
#include <exception>
#include <functional>
#include <memory>
#include <optional>

namespace zivra {

enum class MovieFileType { Mpeg4, QuickTime };

enum class VideoCodec { H264, Hevc };

/// A picture of another size is scaled as far as it fits, on black.
struct VideoSettings {
    VideoCodec codec = VideoCodec::H264;
    int width = 0;                   ///< pixels, even
    int height = 0;                  ///< pixels, even
    std::int64_t averageBitRate = 0; ///< bits a second
    int expectedSourceFrameRate = 30;
    int maxKeyFrameInterval = 60; ///< frames
};

/// Sound is stored as AAC.
struct AudioSettings {
    double sampleRate = 48000;
    int channels = 2;
    int bitRate = 160000; ///< bits a second
};

/// How the packets of a track are to be understood: codec, dimensions, decoder set-up. Opaque outside
/// of the movie layer that made it; immutable.
class TrackFormat {
public:
    virtual ~TrackFormat() = default;
};

/// A track's transformation for display, row by row, as the fixed-point matrix that movie files
/// store (ISO/IEC 14496-12, track header).
using TrackTransform = std::array<std::int32_t, 9>;

/// One track of a movie that is being written. Lives as long as its writer.
class MovieWriterInput {
public:
    virtual ~MovieWriterInput() = default;

    /// Set before writing starts. True: the input never makes its caller wait, it stops being ready.
    virtual void setExpectsMediaDataInRealTime(bool realTime) = 0;
    /// May be called from any thread.
    [[nodiscard]] virtual bool isReadyForMoreMediaData() const = 0;
    /// False when the sample was not taken: the writer has failed or the input is finished.
    virtual bool append(const MediaSample &sample) = 0;
    virtual void markAsFinished() = 0;
    /// Runs `work` on `queue` each time the input becomes ready, at first as soon as it is, until it
    /// is marked as finished. A writer that fails runs it too, so that whoever waits can end.
    virtual void requestMediaDataWhenReady(std::shared_ptr<SerialQueue> queue,
                                           std::function<void()> work) = 0;
};

/// Writes one movie file. Inputs are added, writing and the session started, samples appended,
/// inputs marked as finished and the writer finished, in that order, from one context at a time.
///
/// The file is fragmented and flushed every second by time, so that it plays up to the last second
/// whatever happens to the process. Destroying an unfinished writer leaves the file at its last flush.
/// Where several inputs take sound in real time, their mix is recorded along with them, for
/// `MovieServices::useReadyMix`.
class MovieWriter {
public:
    enum class Status { Unknown, Writing, Completed, Failed };

    virtual ~MovieWriter() = default;

    /// Each returns an input that the writer owns.
    virtual MovieWriterInput &addVideoInput(const VideoSettings &settings) = 0;
    virtual MovieWriterInput &addAudioInput(const AudioSettings &settings) = 0;
    /// Takes encoded packets as they are.
    virtual MovieWriterInput &addPassthroughInput(std::shared_ptr<const TrackFormat> format,
                                                  const std::optional<TrackTransform> &transform) = 0;

    /// Called at most once, on a thread of the writer, when the file can take no more (a full disk)
    /// while the status stays `Writing`: further samples are dropped, and finishing completes the file with
    /// what it has. Without a handler the writing fails.
    virtual void setInterruptionHandler(std::function<void(std::exception_ptr)> handler) = 0;

    /// Creates the file, which must not exist yet, and returns false with `error()` set otherwise.
    [[nodiscard]] virtual bool startWriting() = 0;
    /// The sample time that becomes the movie's time zero.
    virtual void startSession(MediaTime sourceTime) = 0;
    /// May be called from any thread.
    [[nodiscard]] virtual Status status() const = 0;
    /// Null while nothing has failed. May be called from any thread.
    [[nodiscard]] virtual std::exception_ptr error() const = 0;
    [[nodiscard]] virtual QUrl outputURL() const = 0;
    /// Done when the file is closed; never fails itself: `status()` tells the outcome.
    [[nodiscard]] virtual QFuture<void> finishWriting() = 0;
};

} // namespace zivra
