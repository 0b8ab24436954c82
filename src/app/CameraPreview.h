#pragma once

#include "capture/CameraManager.h"
#include "capture/Devices.h"
#include "capture/Permissions.h"
#include "overlays/CameraBubbleController.h"
#include "platform/Authorization.h"
#include "platform/ShareableContent.h"
#include "settings/Settings.h"

#include <QCoroTask>

#include <functional>

namespace zivra {

/// Switches the camera and its bubble on and off. On the main thread; like the coordinator, which owns it,
/// it outlives the event loop.
class CameraPreview {
public:
    struct Collaborators {
        Settings &settings;
        Devices &devices;
        CameraManager &camera;
        CameraBubbleController &bubble;
        Screens &screens;
        Permissions &permissions;
        MediaAuthorization &authorization;
    };

    /// `isAllowed`: no recording needs the camera.
    CameraPreview(Collaborators collaborators, std::function<bool()> isAllowed);

    void startCamera();
    void showBubble(const Screen &screen, bool cameraOnly);
    void stop();

    /// Whether the camera is to show while nothing is recorded; asks for the permission at the first time.
    void setWanted(bool wanted);
    /// Follows the settings and the permission.
    void refresh();

private:
    QCoro::Task<> askAndRefresh();
    [[nodiscard]] bool isAuthorization(AuthorizationStatus status) const;

    Collaborators m_with;
    std::function<bool()> m_isAllowed;
    bool m_isWanted = false;
};

} // namespace zivra
