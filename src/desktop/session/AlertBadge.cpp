#include "desktop/session/AlertBadge.h"

#include <QPainter>

namespace zivra::desktop {

namespace {

/// The badges are designed in a square of this many points.
constexpr qreal designSize = 48;

constexpr auto informationBlue = QColor(38, 118, 230);
constexpr auto warningAmber = QColor(245, 166, 20);

void drawInformation(QPainter &painter)
{
    painter.setBrush(informationBlue);
    painter.drawEllipse(QRectF(3, 3, 42, 42));
    painter.setBrush(Qt::white);
    painter.drawEllipse(QRectF(21.2, 12, 5.6, 5.6));
    painter.drawRoundedRect(QRectF(21.7, 20.5, 4.6, 15.5), 2.3, 2.3);
}

void drawWarning(QPainter &painter)
{
    // The thick round pen in the fill's colour makes the corners round.
    painter.setBrush(warningAmber);
    painter.setPen(QPen(warningAmber, 8, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPolygon(QPolygonF{QPointF(24, 8.5), QPointF(41.5, 39.5), QPointF(6.5, 39.5)});
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::white);
    painter.drawRoundedRect(QRectF(21.7, 15, 4.6, 15), 2.3, 2.3);
    painter.drawEllipse(QRectF(21.2, 33.2, 5.6, 5.6));
}

} // namespace

QPixmap alertBadge(Alert::Style style, int side, qreal pixelsPerPoint)
{
    QPixmap badge(QSizeF(side * pixelsPerPoint, side * pixelsPerPoint).toSize());
    badge.setDevicePixelRatio(pixelsPerPoint);
    badge.fill(Qt::transparent);
    QPainter painter(&badge);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.scale(side / designSize, side / designSize);
    if (style == Alert::Style::Warning) {
        drawWarning(painter);
    } else {
        drawInformation(painter);
    }
    return badge;
}

} // namespace zivra::desktop
