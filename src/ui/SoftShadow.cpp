#include "ui/SoftShadow.h"

#include <QImage>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace zivra {

namespace {

/// The distance from a point to the edge of a rounded rectangle around the origin, negative inside.
double distanceToEdge(QPointF point, QSizeF half, double radius)
{
    const double x = std::abs(point.x()) - half.width() + radius;
    const double y = std::abs(point.y()) - half.height() + radius;
    return std::min(std::max(x, y), 0.0) + std::hypot(std::max(x, 0.0), std::max(y, 0.0)) - radius;
}

} // namespace

SoftShadow::SoftShadow(QQuickItem *parent) : VectorItem(parent)
{
    connect(this, &SoftShadow::changed, this, [this] { update(); });
}

VectorItem::Painting SoftShadow::painting() const
{
    const double radius = m_cornerRadius < 0 ? std::min(width(), height()) / 2 - m_margin : m_cornerRadius;
    return [size = size(), margin = m_margin, radius, deviation = m_blur / 2, offset = m_offset,
            color = m_color](QPainter &painter) {
        const double scale = painter.deviceTransform().m11();
        QImage shadow((size * scale).toSize(), QImage::Format_ARGB32_Premultiplied);
        const QSizeF half(size.width() / 2 - margin, size.height() / 2 - margin);
        for (int row = 0; row < shadow.height(); ++row) {
            auto *pixels = reinterpret_cast<QRgb *>(shadow.scanLine(row));
            for (int column = 0; column < shadow.width(); ++column) {
                const QPointF point((column + 0.5) / scale - size.width() / 2,
                                    (row + 0.5) / scale - size.height() / 2 - offset);
                // A Gaussian blur of a straight edge; near enough for corners much larger than the blur.
                const double share =
                    std::erfc(distanceToEdge(point, half, radius) / deviation / std::numbers::sqrt2) / 2;
                pixels[column] =
                    qPremultiply(qRgba(color.red(), color.green(), color.blue(),
                                       static_cast<int>(std::lround(color.alphaF() * share * 255))));
            }
        }
        painter.drawImage(QRectF(QPointF(0, 0), size), shadow);
    };
}

} // namespace zivra
