#pragma once

#include "desktop/x11/XcbConnection.h"

#include <QPointF>
#include <QRect>
#include <QRectF>
#include <QString>

#include <cstdint>
#include <vector>

namespace zivra::desktop {

/// A display as the server has it.
struct Monitor {
    std::uint32_t displayID = 0; ///< XID of its first RandR output; of the root window where there is none
    QString name;
    QRect pixels;             ///< within the root window
    QRect visiblePixels = {}; ///< without what docks and panels have reserved at its edges
};

/// The displays now and the way from the server's pixels to points and back to what Qt calls them: a
/// display's origin is the same number in both, distances within a display are divided by the scale.
class MonitorLayout {
public:
    /// Asks the server; takes well under a millisecond. Has at least one display while the server lives.
    explicit MonitorLayout(const XcbConnection &connection);

    /// The main display first.
    [[nodiscard]] const std::vector<Monitor> &monitors() const { return m_monitors; }
    /// Pixels a point.
    [[nodiscard]] double scale() const { return m_scale; }

    [[nodiscard]] QRectF frame(const Monitor &monitor) const { return toFrame(monitor, monitor.pixels); }
    [[nodiscard]] QRectF visibleFrame(const Monitor &monitor) const
    {
        return toFrame(monitor, monitor.visiblePixels);
    }
    /// In the coordinates of the display that contains the point.
    [[nodiscard]] QPointF toPoints(const QPoint &pixels) const;
    /// In the coordinates of the display that shows most of the rectangle.
    [[nodiscard]] QRectF toPoints(const QRect &pixels) const;

private:
    [[nodiscard]] QPointF toPoints(const QPoint &pixels, const QPoint &displayOrigin) const;

    [[nodiscard]] QRectF toFrame(const Monitor &monitor, const QRect &pixels) const;

    std::vector<Monitor> m_monitors;
    double m_scale;
};

} // namespace zivra::desktop
