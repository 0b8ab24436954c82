#pragma once

#include "desktop/x11/XcbConnection.h"

#include <QRegion>

#include <xcb/damage.h>
#include <xcb/xfixes.h>

#include <optional>

namespace zivra::desktop {

/// Knows what was drawn in a window and those in it. A window that nobody draws in costs nothing.
class DamageTracker {
public:
    DamageTracker(const XcbConnection &connection, xcb_window_t window);
    ~DamageTracker();
    DamageTracker(const DamageTracker &) = delete;
    DamageTracker &operator=(const DamageTracker &) = delete;

    /// Takes note of a damage event, of whatever window it is.
    void note(const xcb_damage_notify_event_t &event) { m_hasDamage |= event.damage == m_damage; }
    [[nodiscard]] bool hasDamage() const { return m_hasDamage; }

    /// Asks for what was drawn so far, which then counts as seen. Taken apart into question and answer so
    /// that many windows take one round trip.
    void request();
    /// What `request()` asked for, in the window's pixels, coarsened to blocks; empty without a request.
    [[nodiscard]] QRegion answer();

private:
    const XcbConnection &m_connection;
    xcb_damage_damage_t m_damage;
    xcb_xfixes_region_t m_region;
    bool m_hasDamage = false;
    std::optional<xcb_xfixes_fetch_region_cookie_t> m_asked;
};

} // namespace zivra::desktop
