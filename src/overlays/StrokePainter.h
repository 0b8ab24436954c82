#pragma once

#include "overlays/DrawingModel.h"

#include <QImage>
#include <QUuid>

#include <map>
#include <set>
#include <vector>

namespace zivra {

/// The strokes as pictures. Each is painted for itself and solid, a piece at a time as it grows; to fade, it
/// only has to be shown with less opacity. Strokes are long and thin, so they are in small square tiles that
/// are numbered row by row. Sizes are in pixels of the screen.
class StrokePainter {
public:
    static constexpr int kTileSide = 60;

    struct Painted {
        QUuid id;
        std::size_t pointCount = 0;
        double opacity = 1;
        std::map<int, QImage> tiles = {}; ///< premultiplied
        std::set<int> fresh = {};         ///< tiles painted since the last `forgetFresh()`
    };

    /// Begins anew. `scale`: pixels a point.
    void reset(QSize size, double scale);
    [[nodiscard]] QSize size() const { return m_size; }

    /// Brings the pictures up to this moment. Returns whether anything looks different.
    bool paint(const std::vector<DrawingModel::Stroke> &strokes, MediaTime now);

    /// The lowest first.
    [[nodiscard]] const std::vector<Painted> &strokes() const { return m_strokes; }
    void forgetFresh();
    [[nodiscard]] QRect rectOf(int tile) const;

private:
    bool dropGone(const std::vector<DrawingModel::Stroke> &strokes);
    bool paint(const DrawingModel::Stroke &stroke, MediaTime now);
    void paintPiece(Painted &painted, const DrawingModel::Stroke &stroke) const;
    [[nodiscard]] std::set<int> tilesOf(QPointF from, QPointF to) const;

    QSize m_size;
    double m_scale = 1;
    std::vector<Painted> m_strokes;
};

} // namespace zivra
