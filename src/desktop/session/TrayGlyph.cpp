#include "desktop/session/TrayGlyph.h"

#include <QIconEngine>
#include <QPainter>
#include <QPainterPath>

#include <memory>

namespace zivra::desktop {

namespace {

/// The glyphs are designed in a square of this many points.
constexpr qreal designSize = 18;
constexpr auto recordingRed = QColor(255, 59, 48);

/// A rectangle given from the bottom left of the design, in the painter's coordinates.
QRectF fromBottomLeft(qreal x, qreal y, qreal width, qreal height)
{
    return {x, designSize - y - height, width, height};
}

QPainterPath roundedRectangle(const QRectF &rect, qreal radius)
{
    QPainterPath path;
    path.addRoundedRect(rect, radius, radius);
    return path;
}

QPainterPath oval(const QRectF &rect)
{
    QPainterPath path;
    path.addEllipse(rect);
    return path;
}

/// A screen's outline with the camera's disc in front of its corner.
QPainterPath idlePath()
{
    QPainterPathStroker pen;
    pen.setWidth(1.5);
    const auto screen =
        pen.createStroke(roundedRectangle(fromBottomLeft(3.5, 5.5, 13, 9.5), 2.2)).simplified();
    return screen.subtracted(oval(fromBottomLeft(0.4, 0.4, 9.2, 9.2)))
        .united(oval(fromBottomLeft(1.8, 1.8, 6.4, 6.4)));
}

class GlyphEngine final : public QIconEngine {
public:
    GlyphEngine(StatusGlyph glyph, const QColor &tint, std::function<void()> painted)
        : m_glyph(glyph),
          m_tint(tint),
          m_painted(std::move(painted))
    {
    }

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode /*mode*/, QIcon::State /*state*/) override
    {
        draw(*painter, rect);
        if (m_painted) {
            m_painted();
        }
    }

    QPixmap pixmap(const QSize &size, QIcon::Mode /*mode*/, QIcon::State /*state*/) override
    {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        draw(painter, QRect(QPoint(), size));
        return pixmap;
    }

    /// What a tray that takes the icon as pictures is given.
    QList<QSize> availableSizes(QIcon::Mode /*mode*/, QIcon::State /*state*/) override
    {
        QList<QSize> sizes;
        for (const int side : {16, 18, 22, 24, 32, 36, 48, 64}) {
            sizes.append({side, side});
        }
        return sizes;
    }

    [[nodiscard]] QIconEngine *clone() const override
    {
        return std::make_unique<GlyphEngine>(*this).release();
    }

private:
    void draw(QPainter &painter, const QRect &rect) const
    {
        const qreal side = std::min(rect.width(), rect.height());
        painter.save();
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.translate(rect.left() + (rect.width() - side) / 2, rect.top() + (rect.height() - side) / 2);
        painter.scale(side / designSize, side / designSize);
        if (m_glyph == StatusGlyph::Recording) {
            painter.setBrush(recordingRed);
            painter.drawEllipse(fromBottomLeft(1.5, 1.5, 15, 15));
            painter.setBrush(Qt::white);
            painter.drawRoundedRect(fromBottomLeft(6, 6, 6, 6), 1.2, 1.2);
        } else {
            painter.fillPath(idlePath(), m_tint);
        }
        painter.restore();
    }

    StatusGlyph m_glyph;
    QColor m_tint;
    std::function<void()> m_painted;
};

} // namespace

QIcon trayIcon(StatusGlyph glyph, const QColor &tint, std::function<void()> painted)
{
    return QIcon(std::make_unique<GlyphEngine>(glyph, tint, std::move(painted)).release());
}

} // namespace zivra::desktop
