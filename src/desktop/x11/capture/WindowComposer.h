#pragma once

#include "desktop/x11/WindowTree.h"
#include "platform/ContentFilter.h"

#include <QRect>

#include <xcb/render.h>

#include <map>
#include <optional>
#include <vector>

namespace zivra::desktop {

/// Puts the windows that a filter lets through together to one picture, as they lie on the screen, in a
/// pixmap on the server. What is left out is never drawn, so it is in no picture, wherever it moves; what is
/// covered is whole.
///
/// Needs every top-level window redirected to memory of its own, which the object asks for and which ends
/// with the connection.
class WindowComposer {
public:
    WindowComposer(const XcbConnection &connection, ContentFilter filter, QRect area);
    ~WindowComposer();
    WindowComposer(const WindowComposer &) = delete;
    WindowComposer &operator=(const WindowComposer &) = delete;

    /// Draws the picture of this moment. False when there is none: the recorded window is minimised.
    bool compose();
    /// As large as the area.
    [[nodiscard]] xcb_pixmap_t picture() const { return m_pixmap; }
    /// The window that is recorded has been closed.
    [[nodiscard]] bool hasLostItsWindow() const { return m_lostWindow; }
    /// The top-level windows of the latest picture.
    [[nodiscard]] const std::vector<xcb_window_t> &shownWindows() const { return m_shown; }

private:
    [[nodiscard]] bool isLetThrough(const StackedWindow &window) const;
    [[nodiscard]] bool recordedWindowIsThere(const std::vector<StackedWindow> &windows);
    void readPictureFormats();
    void drawBackground();
    void draw(xcb_window_t window, const xcb_get_geometry_reply_t &geometry, xcb_visualid_t visual);

    const XcbConnection &m_connection;
    ContentFilter m_filter;
    QRect m_area;
    xcb_pixmap_t m_pixmap;
    xcb_render_picture_t m_target;
    struct VisualFormat {
        xcb_render_pictformat_t format = 0;
        bool hasAlpha = false;
    };
    std::map<xcb_visualid_t, VisualFormat> m_formats;
    /// The one window of an including filter that a window manager knows, and so no overlay of ours.
    std::optional<xcb_window_t> m_recordedWindow;
    bool m_lostWindow = false;
    std::vector<xcb_window_t> m_shown;
};

} // namespace zivra::desktop
