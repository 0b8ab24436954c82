#pragma once

#include <QPointF>
#include <QRectF>
#include <QString>

#include <cstdint>
#include <vector>

namespace zivra {

/// A display of the desktop. All geometry is in points with the origin at the top left of the main
/// display, y growing downwards.
struct Screen {
    std::uint32_t displayID = 0;   ///< never 0 for a real display
    QString name;                  ///< what the desktop calls it, such as a connector's name
    QRectF frame;                  ///< points
    double backingScaleFactor = 1; ///< pixels a point
    QRectF visibleFrame = {};      ///< points; `frame` without the desktop's own bars

    friend bool operator==(const Screen &, const Screen &) = default;
};

/// The displays now and the mouse. Main thread only.
class Screens {
public:
    virtual ~Screens() = default;

    /// The main display first. Empty only when the connection to the desktop is gone.
    [[nodiscard]] virtual std::vector<Screen> screens() const = 0;
    /// Points, in the same coordinates as `Screen::frame`.
    [[nodiscard]] virtual QPointF mouseLocation() const = 0;
};

} // namespace zivra
