#pragma once

#include "platform/Authorization.h"
#include "platform/Workspace.h"

#include <QCoroTask>
#include <QString>

namespace zivra {

/// Asks for access to cameras and microphones, and shows where it is granted. Main thread only.
class Permissions {
public:
    /// Both must outlive the object and its tasks.
    Permissions(MediaAuthorization &authorization, Workspace &workspace);

    // The desktop's settings pages.
    [[nodiscard]] static QString screenCapturePane() { return QStringLiteral("Privacy_ScreenCapture"); }
    [[nodiscard]] static QString cameraPane() { return QStringLiteral("Privacy_Camera"); }
    [[nodiscard]] static QString microphonePane() { return QStringLiteral("Privacy_Microphone"); }

    /// Whether access is granted. The user is asked only where nothing is settled yet.
    [[nodiscard]] QCoro::Task<bool> request(MediaType type);
    void openPrivacySettings(const QString &pane);

private:
    MediaAuthorization &m_authorization;
    Workspace &m_workspace;
};

} // namespace zivra
