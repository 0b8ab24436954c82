#include "overlays/StrokePainter.h"

#include <QPainter>
#include <QPen>

#include <algorithm>
#include <span>
#include <utility>

namespace zivra {

namespace {

constexpr double kLineWidth = 5;  ///< points
constexpr int kTilesInRow = 1000; // more than any screen has

/// In one go, so that the joints are round. A tap is a dot.
void draw(QPainter &painter, std::span<const QPointF> points)
{
    if (std::ranges::all_of(points, [&](QPointF point) { return point == points.front(); })) {
        painter.drawPoint(points.front());
        return;
    }
    painter.drawPolyline(points.data(), static_cast<int>(points.size()));
}

} // namespace

void StrokePainter::reset(QSize size, double scale)
{
    m_size = size;
    m_scale = scale;
    m_strokes.clear();
}

bool StrokePainter::paint(const std::vector<DrawingModel::Stroke> &strokes, MediaTime now)
{
    bool differs = dropGone(strokes);
    for (const DrawingModel::Stroke &stroke : strokes) {
        differs |= paint(stroke, now);
    }
    return differs;
}

void StrokePainter::forgetFresh()
{
    for (Painted &painted : m_strokes) {
        painted.fresh.clear();
    }
}

QRect StrokePainter::rectOf(int tile) const
{
    const QPoint place(tile % kTilesInRow, tile / kTilesInRow);
    return QRect(place * kTileSide, QSize(kTileSide, kTileSide)) & QRect(QPoint(0, 0), m_size);
}

bool StrokePainter::dropGone(const std::vector<DrawingModel::Stroke> &strokes)
{
    const auto isGone = [&](const Painted &painted) {
        return std::ranges::find(strokes, painted.id, &DrawingModel::Stroke::id) == strokes.end();
    };
    return std::erase_if(m_strokes, isGone) > 0;
}

bool StrokePainter::paint(const DrawingModel::Stroke &stroke, MediaTime now)
{
    auto painted = std::ranges::find(m_strokes, stroke.id, &Painted::id);
    if (painted == m_strokes.end()) {
        painted = m_strokes.insert(m_strokes.end(), Painted{.id = stroke.id});
    }
    const double opacity = stroke.opacity(now);
    const bool fades = std::exchange(painted->opacity, opacity) != opacity;
    const bool grows = painted->pointCount != stroke.points.size();
    if (grows) {
        paintPiece(*painted, stroke);
    }
    return fades || grows;
}

void StrokePainter::paintPiece(Painted &painted, const DrawingModel::Stroke &stroke) const
{
    const std::size_t last = painted.pointCount > 0 ? painted.pointCount - 1 : 0;
    const auto piece = std::span(stroke.points).subspan(last);
    std::set<int> tiles;
    for (std::size_t index = 0; index < piece.size(); ++index) {
        tiles.merge(tilesOf(piece[index > 0 ? index - 1 : 0], piece[index]));
    }
    for (const int tile : tiles) {
        const QRect rect = rectOf(tile);
        QImage &picture = painted.tiles[tile];
        if (picture.isNull()) {
            picture = QImage(rect.size(), QImage::Format_ARGB32_Premultiplied);
            picture.fill(Qt::transparent);
        }
        QPainter painter(&picture);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.translate(-rect.topLeft());
        painter.scale(m_scale, m_scale);
        painter.setPen(QPen(stroke.color, kLineWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        draw(painter, piece);
    }
    painted.pointCount = stroke.points.size();
    painted.fresh.merge(tiles);
}

std::set<int> StrokePainter::tilesOf(QPointF from, QPointF to) const
{
    constexpr double kReach = kLineWidth / 2 + 1;
    const QRectF points = QRectF(from, to).normalized().adjusted(-kReach, -kReach, kReach, kReach);
    const QRect pixels = QRectF(points.topLeft() * m_scale, points.size() * m_scale).toAlignedRect() &
                         QRect(QPoint(0, 0), m_size);
    std::set<int> tiles;
    if (pixels.isEmpty()) {
        return tiles;
    }
    for (int row = pixels.top() / kTileSide; row <= pixels.bottom() / kTileSide; ++row) {
        for (int column = pixels.left() / kTileSide; column <= pixels.right() / kTileSide; ++column) {
            tiles.insert(row * kTilesInRow + column);
        }
    }
    return tiles;
}

} // namespace zivra
