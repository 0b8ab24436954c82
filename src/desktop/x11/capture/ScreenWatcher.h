#pragma once

#include "desktop/x11/XcbConnection.h"

#include <QPoint>
#include <QRect>

#include <xcb/damage.h>
#include <xcb/xfixes.h>

#include <map>
#include <vector>

namespace zivra::desktop {

/// Hears of everything that can change the picture of a part of the screen: drawing, windows that move, the
/// cursor, the mouse, the displays. While nothing happens it costs nothing.
class ScreenWatcher {
public:
    /// What has happened since the last `takeEvents()`.
    struct Events {
        bool cursorMoved = false;
        bool windowsChanged = false;
        bool displaysChanged = false;
        std::vector<QPoint> presses; ///< places on the root window, in pixels
    };

    /// `watchesWindows`: also hear of windows that nothing on the screen shows changing.
    ScreenWatcher(const XcbConnection &connection, QRect area, bool watchesWindows);
    ~ScreenWatcher();
    ScreenWatcher(const ScreenWatcher &) = delete;
    ScreenWatcher &operator=(const ScreenWatcher &) = delete;

    /// Reads what the server has sent; never waits.
    [[nodiscard]] Events takeEvents();
    /// Something was drawn that has not been looked at.
    [[nodiscard]] bool hasDamage() const { return m_isDamaged; }
    /// Looks at what was drawn, which then counts as seen; true when it touches the area.
    [[nodiscard]] bool takeDamage();
    /// The windows to hear of, besides the screen.
    void watchWindows(const std::vector<xcb_window_t> &windows);

private:
    void selectEvents(bool watchesWindows) const;
    void note(const xcb_generic_event_t &event, Events &events);
    void noteInput(const xcb_ge_generic_event_t &event, Events &events) const;

    const XcbConnection &m_connection;
    QRect m_area;
    xcb_damage_damage_t m_rootDamage;
    xcb_xfixes_region_t m_region;
    std::map<xcb_window_t, xcb_damage_damage_t> m_windowDamage;
    bool m_isDamaged = true;
    bool m_windowDrew = true; ///< one of the watched windows, which counts whatever the screen shows
    std::uint8_t m_damageEvent;
    std::uint8_t m_fixesEvent;
    std::uint8_t m_randrEvent;
    std::uint8_t m_inputOpcode;
};

} // namespace zivra::desktop
