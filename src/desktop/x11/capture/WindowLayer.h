#pragma once

#include "desktop/x11/capture/DamageTracker.h"
#include "desktop/x11/capture/WindowStack.h"

#include <QRegion>

#include <xcb/render.h>

namespace zivra::desktop {

/// How the server draws a visual's pixels.
struct PictureFormat {
    xcb_render_pictformat_t format = XCB_NONE; ///< none: not to be drawn
    bool hasAlpha = false;
};

/// A redirected window as one layer of a composed picture: its pixels, also where other windows cover it.
class WindowLayer {
public:
    /// The window must have been redirected.
    WindowLayer(const XcbConnection &connection, const TopLevel &window, PictureFormat format);
    ~WindowLayer();
    WindowLayer(const WindowLayer &) = delete;
    WindowLayer &operator=(const WindowLayer &) = delete;

    [[nodiscard]] const TopLevel &window() const { return m_window; }
    [[nodiscard]] DamageTracker &damage() { return m_damage; }

    /// Gets hold of the window's pixels anew, which a window loses when it is resized or shown again. Taken
    /// apart so that many windows take one round trip. Keeps the ones it has where the server refuses.
    void requestPixels(const TopLevel &window);
    void receivePixels();

    /// What was drawn since the last time, in pixels of the root window; after `damage().request()`.
    [[nodiscard]] QRegion takeDamage();

    /// Draws it onto a picture whose top left is at `origin` of the root window, within the picture's clip.
    void draw(xcb_render_picture_t target, QPoint origin, bool isTranslucent) const;

private:
    void release();

    const XcbConnection &m_connection;
    TopLevel m_window;
    PictureFormat m_format;
    DamageTracker m_damage;
    xcb_pixmap_t m_pixmap = XCB_NONE;
    xcb_render_picture_t m_picture = XCB_NONE;
    xcb_pixmap_t m_named = XCB_NONE; ///< being asked for
    xcb_void_cookie_t m_naming{};
    TopLevel m_namedWindow;
};

} // namespace zivra::desktop
