#pragma once

#include "platform/CaptureDevices.h"
#include "platform/PicturePreview.h"
#include "settings/RecordingChoices.h"

#include <QCoroTask>
#include <QUrl>

#include <optional>

namespace zivra {

/// The one camera session of the program: it feeds the live preview and records camera-only takes to a
/// QuickTime file. Main thread only; every operation returns at once and is carried out in order.
///
/// Nothing here fails: a camera or microphone that cannot be opened is left out.
class CameraManager {
public:
    virtual ~CameraManager() = default;

    /// Runs the session with this camera at this quality; without a device, with the one it has. May be
    /// called again at any time to switch.
    virtual void start(const std::optional<CaptureDevice> &device, VideoQuality quality) = 0;
    /// Stops the session, unless a movie is being recorded.
    virtual void stop() = 0;

    /// Records to a file that does not exist yet, until `stopMovie()`.
    virtual void startMovie(const std::optional<CaptureDevice> &microphone, const QUrl &url) = 0;
    virtual void pauseMovie() = 0;
    virtual void resumeMovie() = 0;
    /// Absent when no movie was being recorded or its file is not usable. The session goes on running.
    [[nodiscard]] virtual QCoro::Task<std::optional<QUrl>> stopMovie() = 0;

    /// What the camera sees, while the session runs. The same object for the life of the manager.
    [[nodiscard]] virtual PicturePreview &preview() = 0;
};

} // namespace zivra
