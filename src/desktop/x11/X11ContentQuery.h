#pragma once

#include "desktop/x11/XcbConnection.h"
#include "platform/ShareableContent.h"

namespace zivra::desktop {

/// The displays and windows of an X server. Each question is answered at once.
///
/// A window's number is the XID of the application's own window (what tools such as xwininfo show), without
/// a window manager's frame. A window whose process is not known has no owner.
class X11ContentQuery final : public ContentQuery {
public:
    /// Connects to a display such as ":0"; empty stands for $DISPLAY. Throws `PlatformError`.
    explicit X11ContentQuery(const QByteArray &displayName = {}) : m_connection(displayName) {}

    [[nodiscard]] QFuture<ShareableContent> shareableContent(bool excludingDesktopWindows,
                                                             bool onScreenWindowsOnly) override;
    /// Brings its topmost window forward, one that is on screen if there is any, and gives it the keyboard.
    void activateApplication(std::int64_t processID) override;

private:
    void activate(xcb_window_t window) const;

    XcbConnection m_connection;
};

} // namespace zivra::desktop
