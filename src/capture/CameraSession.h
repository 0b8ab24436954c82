#pragma once

#include "capture/LatestPicture.h"
#include "capture/LiveMovie.h"
#include "platform/CaptureDevices.h"
#include "platform/CaptureSources.h"
#include "platform/MediaClock.h"
#include "settings/RecordingChoices.h"

#include <QFuture>
#include <QSize>
#include <QUrl>

#include <cstdint>
#include <memory>
#include <optional>

namespace zivra {

/// What the camera manager does on its queue, which everything here but the construction is confined to:
/// one camera, and while a movie is recorded a microphone and the movie.
///
/// Nothing fails: what cannot be opened is left out. A camera that goes away during a movie leaves its last
/// picture standing, and another one can take its place.
class CameraSession : public std::enable_shared_from_this<CameraSession> {
public:
    /// They outlive the session.
    struct Services {
        CameraSourceFactory &cameras;
        SoundSourceFactory &sounds;
        MovieServices &movies;
        MediaClock &clock;
    };

    CameraSession(Services services, SerialQueue &queue, std::shared_ptr<LatestPicture> preview);

    /// Runs with this camera at this quality; without a device, with the one it has.
    void start(const std::optional<CaptureDevice> &device, VideoQuality quality);
    /// Nothing while a movie is recorded. The camera stays chosen.
    void stop();

    void startMovie(const std::optional<CaptureDevice> &microphone, const QUrl &url);
    void pauseMovie();
    void resumeMovie();
    /// Repeats the last picture of a movie when no other has come for long.
    void holdPicture();
    /// Begins to close the movie. Absent when none is recorded, or nothing of it; otherwise `endMovie()` is
    /// to follow.
    [[nodiscard]] std::optional<QFuture<void>> stopMovie();
    /// The closed file; absent when it is not usable.
    [[nodiscard]] std::optional<QUrl> endMovie();

private:
    void openCamera();
    void openMicrophone(const CaptureDevice &microphone);
    void closeCamera();
    void cameraEnded(std::uint64_t opening);
    void receivePicture(std::uint64_t opening, const MediaSample &picture);
    void repeatPictureIfOlderThan(MediaTime age);
    [[nodiscard]] bool isRecording() const { return m_movie && !m_isClosing; }

    Services m_with;
    SerialQueue &m_queue; ///< outlives the sources, and so whatever they hand in
    std::shared_ptr<LatestPicture> m_preview;
    bool m_isRunning = false;
    std::optional<QString> m_cameraID; ///< of the camera that is the input
    QSize m_size;                      ///< pixels that are asked of it
    std::uint64_t m_opening = 0;       ///< counts the openings of cameras, to tell what an earlier one sent
    MediaSample m_lastPicture;         ///< of this movie; not valid before the first
    std::unique_ptr<LiveMovie> m_movie;
    bool m_isClosing = false; ///< the movie takes no more
    // The last ones, so that they end before all that their samples reach. Null while closed.
    std::unique_ptr<CaptureSource> m_camera;
    std::unique_ptr<CaptureSource> m_microphone;
};

} // namespace zivra
