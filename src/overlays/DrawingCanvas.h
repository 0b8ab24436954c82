#pragma once

#include "overlays/DrawingModel.h"
#include "overlays/StrokePainter.h"

#include <QElapsedTimer>
#include <QQuickItem>
#include <QRegion>
#include <QTimer>

#include <map>

class QSGImageNode;
class QSGOpacityNode;

namespace zivra {

/// The view of the strokes, and the pen. It draws 30 times a second at most, and not at all while nothing
/// moves or fades.
class DrawingCanvas : public QQuickItem {
    Q_OBJECT
    /// What of the item is drawn on, in points; for desktops that cannot blend windows.
    Q_PROPERTY(QRegion visibleRegion READ visibleRegion)

public:
    /// The model outlives the canvas.
    explicit DrawingCanvas(DrawingModel &model);

    [[nodiscard]] QRegion visibleRegion() const;

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    QSGNode *updatePaintNode(QSGNode *old, UpdatePaintNodeData *data) override;

private:
    /// A stroke in the scene graph, which owns it.
    struct Shown {
        QSGOpacityNode *node = nullptr;
        std::map<int, QSGImageNode *> tiles;
    };

    void followStrokes();
    void redraw();
    void wakeForFading();
    void removeGone(QSGNode &root);
    void show(QSGNode &root, const StrokePainter::Painted &stroke);
    void showTile(QSGNode &parent, QSGImageNode *&node, int tile, const QImage &picture);

    DrawingModel &m_model;
    StrokePainter m_painter;
    bool m_isAnew = false; ///< the painter has begun anew since
    std::map<QUuid, Shown> m_shown;
    QTimer m_next;
    QElapsedTimer m_sinceLast;
};

} // namespace zivra
