#pragma once

#include <QPointF>
#include <QRectF>
#include <QSizeF>

namespace zivra {

// Where panels go is told from a screen's lower left corner, upwards; frames count from the upper left,
// downwards. The way from the one to the other is here and nowhere else.

/// A rectangle with its lower left corner this far to the right of the area's and above it.
inline QRectF fromLowerLeft(const QRectF &area, QPointF distance, QSizeF size)
{
    return {area.left() + distance.x(), area.bottom() - distance.y() - size.height(), size.width(),
            size.height()};
}

/// The same lower left corner with another size: it grows upwards and to the right.
inline QRectF resizedFromLowerLeft(const QRectF &frame, QSizeF size)
{
    return fromLowerLeft(frame, {0, 0}, size);
}

inline QRectF centredIn(const QRectF &area, QSizeF size)
{
    QRectF frame(QPointF(0, 0), size);
    frame.moveCenter(area.center());
    return frame;
}

} // namespace zivra
