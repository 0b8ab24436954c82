#pragma once

#include "desktop/x11/capture/DamageTracker.h"
#include "desktop/x11/capture/SharedImage.h"

#include <QRect>
#include <QRegion>

namespace zivra::desktop {

/// A rectangle of the screen just as it is: what costs the server least.
class RootView {
public:
    /// `area` in pixels of the root window; what of it is outside of the screen is black.
    RootView(const XcbConnection &connection, QRect area);

    [[nodiscard]] DamageTracker &damage() { return m_damage; }
    [[nodiscard]] const DamageTracker &damage() const { return m_damage; }
    /// What was drawn since the last time, in pixels of the area.
    [[nodiscard]] QRegion takeDamage();
    /// The screen has another size.
    void measureScreen();
    /// Reads all rows that a region of the area touches.
    [[nodiscard]] bool read(SharedImage &image, const QRegion &region);

private:
    const XcbConnection &m_connection;
    QRect m_area;
    QRect m_screen; ///< in pixels of the root window
    DamageTracker m_damage;
};

} // namespace zivra::desktop
