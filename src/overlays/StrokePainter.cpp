#include "overlays/StrokePainter.h"

#include <QPainter>
#include <QPen>
#include <QPolygonF>

#include <algorithm>
#include <span>

namespace zivra {

namespace {

constexpr double kLineWidth = 5; ///< points

QPen penOf(const DrawingModel::Stroke &stroke, double opacity)
{
    QColor color = stroke.color;
    color.setAlphaF(static_cast<float>(opacity));
    return {color, kLineWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin};
}

/// In one go, so that a stroke that crosses itself is equally see-through everywhere. A tap is a dot.
void draw(QPainter &painter, std::span<const QPointF> points)
{
    if (std::ranges::all_of(points, [&](QPointF point) { return point == points.front(); })) {
        painter.drawPoint(points.front());
        return;
    }
    painter.drawPolyline(points.data(), static_cast<int>(points.size()));
}

} // namespace

void StrokePainter::reset(QSize pixels, double scale)
{
    m_picture = QImage(pixels, QImage::Format_ARGB32_Premultiplied);
    m_picture.fill(Qt::transparent);
    m_scale = scale;
    m_painted.clear();
}

QRegion StrokePainter::paint(const std::vector<DrawingModel::Stroke> &strokes, MediaTime now)
{
    const QRegion stale = takeStale(strokes, now);
    if (!stale.isEmpty()) {
        repaint(stale, strokes, now);
    }
    QRegion changed = stale;
    for (const DrawingModel::Stroke &stroke : strokes) {
        changed += paintNew(stroke, now);
    }
    return changed;
}

QRegion StrokePainter::inked() const
{
    QRegion all;
    for (const Painted &painted : m_painted) {
        all += painted.tiles;
    }
    return all;
}

/// The tiles of strokes that have gone or are paler than when they were painted.
QRegion StrokePainter::takeStale(const std::vector<DrawingModel::Stroke> &strokes, MediaTime now)
{
    QRegion stale;
    std::erase_if(m_painted, [&](Painted &painted) {
        const auto stroke = std::ranges::find(strokes, painted.id, &DrawingModel::Stroke::id);
        const bool isGone = stroke == strokes.end();
        const double opacity = isGone ? 0 : stroke->opacity(now);
        if (opacity != painted.opacity) {
            painted.opacity = opacity;
            stale += painted.tiles;
        }
        return isGone;
    });
    return stale;
}

void StrokePainter::repaint(const QRegion &tiles, const std::vector<DrawingModel::Stroke> &strokes,
                            MediaTime now)
{
    QPainter painter(&m_picture);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    for (const QRect &rect : tiles) {
        painter.fillRect(rect, Qt::transparent);
    }
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    painter.setClipRegion(tiles);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(m_scale, m_scale);
    for (const DrawingModel::Stroke &stroke : strokes) {
        const auto painted = find(stroke.id);
        if (painted != m_painted.end() && painted->tiles.intersects(tiles) && painted->opacity > 0) {
            painter.setPen(penOf(stroke, stroke.opacity(now)));
            draw(painter, std::span(stroke.points).first(painted->pointCount));
        }
    }
}

QRegion StrokePainter::paintNew(const DrawingModel::Stroke &stroke, MediaTime now)
{
    auto painted = find(stroke.id);
    if (painted == m_painted.end()) {
        painted = m_painted.insert(m_painted.end(), Painted{stroke.id, 0, stroke.opacity(now), {}});
    }
    if (painted->pointCount == stroke.points.size()) {
        return {};
    }
    const std::size_t last = painted->pointCount > 0 ? painted->pointCount - 1 : 0;
    const auto piece = std::span(stroke.points).subspan(last);
    QRegion tiles;
    for (std::size_t index = 0; index < piece.size(); ++index) {
        tiles += tilesOf(piece[index > 0 ? index - 1 : 0], piece[index]);
    }
    QPainter painter(&m_picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(m_scale, m_scale);
    painter.setPen(penOf(stroke, painted->opacity));
    draw(painter, piece);
    painted->pointCount = stroke.points.size();
    painted->tiles += tiles;
    return tiles;
}

QRegion StrokePainter::tilesOf(QPointF from, QPointF to) const
{
    constexpr double kReach = kLineWidth / 2 + 1;
    const QRectF points = QRectF(from, to).normalized().adjusted(-kReach, -kReach, kReach, kReach);
    const QRect pixels =
        QRectF(points.topLeft() * m_scale, points.size() * m_scale).toAlignedRect() & m_picture.rect();
    if (pixels.isEmpty()) {
        return {};
    }
    const QPoint first(pixels.left() / kTileSide, pixels.top() / kTileSide);
    const QPoint last(pixels.right() / kTileSide, pixels.bottom() / kTileSide);
    const QRect tiles(first * kTileSide, (last + QPoint(1, 1)) * kTileSide - QPoint(1, 1));
    return tiles & m_picture.rect();
}

std::vector<StrokePainter::Painted>::iterator StrokePainter::find(const QUuid &id)
{
    return std::ranges::find(m_painted, id, &Painted::id);
}

} // namespace zivra
