#pragma once

#include "platform/MovieWriter.h"

#include <QByteArray>
#include <QSize>

#include <vector>

namespace zivra {

/// One track of a movie file, as the file tells it. A value.
struct MovieTrack {
    int index = 0; ///< the track's place in its file
    MediaType type = MediaType::Video;
    std::vector<std::shared_ptr<const TrackFormat>> formats;
    std::optional<TrackTransform> preferredTransform; ///< absent: none is stored
    QSize naturalSize;                                ///< of a video track, in pixels, not yet transformed
};

/// A movie file opened for its facts. Immutable, may be used from any thread.
class MovieAsset {
public:
    virtual ~MovieAsset() = default;

    [[nodiscard]] virtual QUrl url() const = 0;
    [[nodiscard]] virtual MediaTime duration() const = 0;
    [[nodiscard]] virtual std::vector<MovieTrack> tracks(MediaType type) const = 0;
};

/// One stream that a reader delivers. Lives as long as its reader.
class MovieReaderOutput {
public:
    virtual ~MovieReaderOutput() = default;

    /// The next sample in decoding order, or nothing at the end. Blocks for the disk and the decoder.
    /// The outputs of one reader may be drawn from on different threads at the same time.
    [[nodiscard]] virtual std::optional<MediaSample> copyNextSample() = 0;
};

/// Reads streams out of a movie. The outputs are added, then reading is started.
class MovieReader {
public:
    enum class Status { Unknown, Reading, Completed, Failed };

    virtual ~MovieReader() = default;

    /// The packets of one track as they are stored, with times on the movie's timeline.
    virtual MovieReaderOutput &addTrackOutput(const MovieTrack &track) = 0;
    /// All given tracks decoded and summed, each at its own level and its own time, with a soft limit
    /// in place of clipping.
    virtual MovieReaderOutput &addAudioMixOutput(const std::vector<MovieTrack> &tracks,
                                                 const AudioFormat &format) = 0;
    /// False with `error()` set when the file cannot be read.
    [[nodiscard]] virtual bool startReading() = 0;
    /// `Completed` only when every output was read to its true end. May be called from any thread.
    [[nodiscard]] virtual Status status() const = 0;
    [[nodiscard]] virtual std::exception_ptr error() const = 0;
};

/// Opens, reads, writes and exports movie files. May be used from any thread.
class MovieServices {
public:
    virtual ~MovieServices() = default;

    /// Throws `PlatformError`; creates no file yet.
    [[nodiscard]] virtual std::unique_ptr<MovieWriter> makeWriter(const QUrl &url, MovieFileType type) = 0;
    /// Fails with a `PlatformError`.
    [[nodiscard]] virtual QFuture<std::shared_ptr<const MovieAsset>> openAsset(const QUrl &url) = 0;
    /// Throws `PlatformError`.
    [[nodiscard]] virtual std::unique_ptr<MovieReader>
    makeReader(std::shared_ptr<const MovieAsset> asset) = 0;
    /// Writes the given stretch of the asset to a new file without encoding anything again; picture
    /// and sound start exactly at the start of the range. Fails with a `PlatformError` and then
    /// leaves whatever it wrote.
    [[nodiscard]] virtual QFuture<void> exportPassthrough(std::shared_ptr<const MovieAsset> asset,
                                                          const MediaTimeRange &range, const QUrl &url,
                                                          MovieFileType type) = 0;
    /// A JPEG image of what the movie shows at a time (of its last picture where it ends before), upright and
    /// of no more than that size in pixels; `quality` from 0 to 1. Fails with a `PlatformError`.
    [[nodiscard]] virtual QFuture<QByteArray> stillJPEG(std::shared_ptr<const MovieAsset> asset,
                                                        MediaTime time, const QSize &maximum,
                                                        double quality) = 0;
    /// Completes a movie whose writer died with its process: it becomes like one that was finished. Every
    /// other file is left alone, above all one that is being written. Whether there was something to do.
    [[nodiscard]] virtual QFuture<bool> completeInterrupted(const QUrl &url) = 0;
    /// Makes the mix that was recorded along with a movie's sound tracks its only sound, at once and in
    /// place. False when there is none, or it can't be done: then nothing has changed.
    [[nodiscard]] virtual QFuture<bool> useReadyMix(const QUrl &url) = 0;
};

} // namespace zivra
