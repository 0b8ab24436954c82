#include "ui/RoundedShape.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace zivra {

namespace {

/// A superellipse's corner of the same apparent radius sets in this much earlier.
constexpr double kContinuousReach = 1.28;
/// Where the control points of a corner lie, as a part of the way to the corner of the rectangle; that of a
/// circle is 0.5523.
constexpr double kContinuousBend = 0.70;
constexpr double kCircularBend = 0.5523;

QPainterPath roundedPath(const QRectF &rect, double radius, bool continuous)
{
    const double most = std::min(rect.width(), rect.height()) / 2;
    const double reach = std::min(continuous ? radius * kContinuousReach : radius, most);
    const double rest = reach * (1 - (continuous ? kContinuousBend : kCircularBend));
    const double left = rect.left();
    const double right = rect.right();
    const double top = rect.top();
    const double bottom = rect.bottom();
    QPainterPath path(QPointF(left + reach, top));
    path.lineTo(right - reach, top);
    path.cubicTo(right - rest, top, right, top + rest, right, top + reach);
    path.lineTo(right, bottom - reach);
    path.cubicTo(right, bottom - rest, right - rest, bottom, right - reach, bottom);
    path.lineTo(left + reach, bottom);
    path.cubicTo(left + rest, bottom, left, bottom - rest, left, bottom - reach);
    path.lineTo(left, top + reach);
    path.cubicTo(left, top + rest, left + rest, top, left + reach, top);
    path.closeSubpath();
    return path;
}

} // namespace

RoundedShape::RoundedShape(QQuickItem *parent) : VectorItem(parent)
{
    connect(this, &RoundedShape::changed, this, [this] { update(); });
}

VectorItem::Painting RoundedShape::painting() const
{
    const QRectF whole = boundingRect();
    const double radius = m_radius < 0 ? std::min(width(), height()) / 2 : m_radius;
    const double inset = m_lineWidth / 2;
    const QRectF middle = whole.adjusted(inset, inset, -inset, -inset);
    return [outline = roundedPath(whole, radius, m_continuous), color = m_color,
            line = roundedPath(middle, std::max(radius - inset, 0.0), m_continuous), lineColor = m_lineColor,
            lineWidth = m_lineWidth](QPainter &painter) {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.fillPath(outline, color);
        if (lineWidth > 0) {
            painter.strokePath(line, QPen(lineColor, lineWidth));
        }
    };
}

} // namespace zivra
