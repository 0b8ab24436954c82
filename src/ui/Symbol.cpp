#include "ui/Symbol.h"

#include <QLineF>
#include <QPainter>
#include <QPen>
#include <QSvgRenderer>

namespace zivra {

namespace {

constexpr qreal kDesignSize = 18;
constexpr qreal kLineWidth = 1.5;
const QLatin1String kSlash(".slash");

/// With a gap on both sides, so that the stroke stands off the symbol.
void strikeThrough(QPainter &painter)
{
    const QLineF stroke(2.75, 2.75, 15.25, 15.25);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setCompositionMode(QPainter::CompositionMode_Clear);
    painter.setPen(QPen(Qt::black, 3 * kLineWidth, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(stroke);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    painter.setPen(QPen(Qt::black, kLineWidth, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(stroke);
}

} // namespace

Symbol::Symbol(QQuickItem *parent) : VectorItem(parent)
{
    setImplicitSize(kDesignSize, kDesignSize);
    connect(this, &Symbol::changed, this, [this] { update(); });
}

VectorItem::Painting Symbol::painting() const
{
    return [name = m_name, color = m_color, size = size()](QPainter &painter) {
        const bool isStruck = name.endsWith(kSlash);
        const QString drawing = isStruck ? name.chopped(kSlash.size()) : name;
        QSvgRenderer renderer(QStringLiteral(":/zivra/symbols/%1.svg").arg(drawing));
        painter.scale(size.width() / kDesignSize, size.height() / kDesignSize);
        const QRectF square(0, 0, kDesignSize, kDesignSize);
        renderer.render(&painter, square);
        if (isStruck) {
            strikeThrough(painter);
        }
        painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
        painter.fillRect(square.adjusted(-1, -1, 1, 1), color);
    };
}

} // namespace zivra
