#pragma once

#include "capture/CameraManager.h"
#include "capture/CameraSession.h"
#include "platform/SerialQueue.h"

#include <QTimer>

#include <memory>

namespace zivra {

/// The camera manager proper. Made and used on the main thread; all that touches a device or a file happens
/// on its queue, "zivra.camera" (`CameraSession`).
class SessionCameraManager final : public CameraManager {
public:
    /// The services outlive the manager.
    SessionCameraManager(CameraSession::Services services, SerialQueueFactory &queues);
    /// Ends the session; what a movie holds by then stays in its file.
    ~SessionCameraManager() override;
    SessionCameraManager(const SessionCameraManager &) = delete;
    SessionCameraManager &operator=(const SessionCameraManager &) = delete;

    void start(const std::optional<CaptureDevice> &device, VideoQuality quality) override;
    void stop() override;
    void startMovie(const std::optional<CaptureDevice> &microphone, const QUrl &url) override;
    void pauseMovie() override;
    void resumeMovie() override;
    [[nodiscard]] QCoro::Task<std::optional<QUrl>> stopMovie() override;
    [[nodiscard]] PicturePreview &preview() override { return *m_preview; }

private:
    std::shared_ptr<SerialQueue> m_queue;
    std::shared_ptr<LatestPicture> m_preview;
    std::shared_ptr<CameraSession> m_session; ///< used on `m_queue` only
    QTimer m_holdTimer;                       ///< runs during a movie
};

} // namespace zivra
