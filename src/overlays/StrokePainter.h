#pragma once

#include "overlays/DrawingModel.h"

#include <QImage>
#include <QRegion>
#include <QUuid>

#include <vector>

namespace zivra {

/// The picture of the strokes, kept from one redraw to the next so that only what changed is painted: a new
/// piece of the stroke under the pen, or the surroundings of one that fades. Sizes are in pixels of the
/// screen, regions are made of whole tiles.
class StrokePainter {
public:
    static constexpr int kTileSide = 60;

    /// An empty picture. `scale`: pixels a point.
    void reset(QSize pixels, double scale);

    /// Brings the picture up to this moment. Returns the tiles that differ.
    [[nodiscard]] QRegion paint(const std::vector<DrawingModel::Stroke> &strokes, MediaTime now);

    [[nodiscard]] const QImage &picture() const { return m_picture; }
    /// The tiles that a stroke has been through.
    [[nodiscard]] QRegion inked() const;

private:
    /// A stroke as it is in the picture.
    struct Painted {
        QUuid id;
        std::size_t pointCount = 0;
        double opacity = 1;
        QRegion tiles;
    };

    [[nodiscard]] QRegion takeStale(const std::vector<DrawingModel::Stroke> &strokes, MediaTime now);
    [[nodiscard]] QRegion paintNew(const DrawingModel::Stroke &stroke, MediaTime now);
    void repaint(const QRegion &tiles, const std::vector<DrawingModel::Stroke> &strokes, MediaTime now);
    [[nodiscard]] QRegion tilesOf(QPointF from, QPointF to) const;
    [[nodiscard]] std::vector<Painted>::iterator find(const QUuid &id);

    QImage m_picture; ///< premultiplied
    double m_scale = 1;
    std::vector<Painted> m_painted;
};

} // namespace zivra
