#pragma once

#include "overlays/DrawingModel.h"
#include "overlays/StrokePainter.h"

#include <QElapsedTimer>
#include <QQuickItem>
#include <QRegion>
#include <QTimer>

#include <map>

class QSGImageNode;

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
    void followStrokes();
    void redraw();
    void wakeForFading();
    void showTile(QSGNode &parent, const QRect &tile, const QRegion &inked);

    DrawingModel &m_model;
    StrokePainter m_painter;
    QRegion m_changed;                     ///< tiles that are not on the screen yet
    std::map<int, QSGImageNode *> m_tiles; ///< by number, row by row; the scene graph owns them
    QTimer m_next;
    QElapsedTimer m_sinceLast;
};

} // namespace zivra
