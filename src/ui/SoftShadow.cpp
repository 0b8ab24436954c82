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

SoftShadow::SoftShadow(QQuickItem *parent) : QQuickPaintedItem(parent)
{
    connect(this, &SoftShadow::changed, this, [this] { update(); });
}

void SoftShadow::paint(QPainter *painter)
{
    const double scale = painter->deviceTransform().m11();
    QImage shadow((QSizeF(width(), height()) * scale).toSize(), QImage::Format_ARGB32_Premultiplied);
    const QSizeF half(width() / 2 - m_margin, height() / 2 - m_margin);
    const double radius = m_cornerRadius < 0 ? std::min(half.width(), half.height()) : m_cornerRadius;
    const double deviation = m_blur / 2;
    for (int row = 0; row < shadow.height(); ++row) {
        auto *pixels = reinterpret_cast<QRgb *>(shadow.scanLine(row));
        for (int column = 0; column < shadow.width(); ++column) {
            const QPointF point((column + 0.5) / scale - width() / 2,
                                (row + 0.5) / scale - height() / 2 - m_offset);
            // A Gaussian blur of a straight edge; near enough for corners much larger than the blur.
            const double share =
                std::erfc(distanceToEdge(point, half, radius) / deviation / std::numbers::sqrt2) / 2;
            const double alpha = m_color.alphaF() * share;
            pixels[column] = qPremultiply(qRgba(m_color.red(), m_color.green(), m_color.blue(),
                                                static_cast<int>(std::lround(alpha * 255))));
        }
    }
    painter->drawImage(QRectF(0, 0, width(), height()), shadow);
}

} // namespace zivra
