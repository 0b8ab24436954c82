#pragma once

#include <QString>
#include <QUrl>

namespace zivra {

/// Hands things to the desktop. Main thread only; never waits for what it starts.
class Workspace {
public:
    virtual ~Workspace() = default;

    /// Opens a web page, folder or file with the user's program for it.
    virtual void open(const QUrl &url) = 0;
    /// Opens the desktop's settings page for one of "Privacy_ScreenCapture", "Privacy_Camera",
    /// "Privacy_Microphone", or what comes closest; an unknown name does nothing.
    virtual void openPrivacySettings(const QString &pane) = 0;
};

} // namespace zivra
