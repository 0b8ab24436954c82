#pragma once

#include "desktop/x11/capture/SharedImage.h"
#include "desktop/x11/capture/WindowLayer.h"

#include <QPoint>
#include <QRegion>
#include <QSize>

#include <map>
#include <memory>
#include <set>
#include <vector>

namespace zivra::desktop {

/// Puts a picture together out of windows, in the server's memory, so that it shows just these, whole,
/// however they are covered on the screen. Only what changed is drawn again.
///
/// Regions are in pixels of the root window. Its user redirects the windows, and leaves them so for good,
/// since each change of that makes a window draw itself anew.
class WindowComposer {
public:
    enum class Background { Black, Wallpaper };

    WindowComposer(const XcbConnection &connection, QSize size, Background background);
    ~WindowComposer();
    WindowComposer(const WindowComposer &) = delete;
    WindowComposer &operator=(const WindowComposer &) = delete;

    /// Takes note of what happened to windows: which were shown anew, which were drawn in.
    void noteStructure(const xcb_generic_event_t &event);
    void noteDamage(const xcb_damage_notify_event_t &event);
    [[nodiscard]] bool hasDamage() const;

    /// From now on shows these redirected and viewable windows, from the lowest to the topmost, in a picture
    /// whose top left is at `origin`. Returns what differs.
    [[nodiscard]] QRegion setWindows(const std::vector<TopLevel> &windows, QPoint origin);
    /// The desktop has another wallpaper, or has gained or lost a compositing manager.
    void readDesktop();
    /// What was drawn in the windows since the last time.
    [[nodiscard]] QRegion takeDamage();

    /// Draws a region anew and reads its rows. False when the server has gone.
    [[nodiscard]] bool read(SharedImage &image, const QRegion &region);

private:
    void readPictureFormats();
    void requestPixels(const std::vector<TopLevel> &windows);
    [[nodiscard]] QRegion changeOf(const std::vector<TopLevel> &windows) const;
    void draw(const QRegion &region);
    void drawBackground();

    const XcbConnection &m_connection;
    QSize m_size;
    Background m_background;
    QPoint m_origin;
    xcb_pixmap_t m_pixmap;
    xcb_render_picture_t m_target;
    std::map<xcb_visualid_t, PictureFormat> m_formats;
    std::vector<TopLevel> m_windows; ///< lowest first
    std::map<xcb_window_t, std::unique_ptr<WindowLayer>> m_layers;
    std::set<xcb_window_t> m_shownAnew; ///< since the last `setWindows()`
    xcb_pixmap_t m_wallpaper = XCB_NONE;
    bool m_hasCompositingManager = false;
};

} // namespace zivra::desktop
