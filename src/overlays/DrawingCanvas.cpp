#include "overlays/DrawingCanvas.h"

#include <QBitmap>
#include <QMouseEvent>
#include <QQuickWindow>
#include <QSGImageNode>
#include <QSGTexture>
#include <QTransform>

#include <algorithm>
#include <utility>

namespace zivra {

namespace {

constexpr qint64 kInterval = 33; // milliseconds between redraws
/// Where windows cannot be blended a stroke is seen or not.
constexpr double kLeastVisible = 0.5;
constexpr qint64 kSolid = 3000; // milliseconds after which an ended stroke begins to fade

} // namespace

DrawingCanvas::DrawingCanvas(DrawingModel &model) : m_model(model)
{
    setFlag(ItemHasContents);
    setAcceptedMouseButtons(Qt::LeftButton);
    m_next.setSingleShot(true);
    m_next.setTimerType(Qt::PreciseTimer);
    connect(&m_next, &QTimer::timeout, this, &DrawingCanvas::redraw);
    connect(&m_model, &DrawingModel::strokesChanged, this, &DrawingCanvas::followStrokes);
}

void DrawingCanvas::mousePressEvent(QMouseEvent *event)
{
    m_model.begin(event->position());
    m_model.extend(event->position());
}

void DrawingCanvas::mouseMoveEvent(QMouseEvent *event)
{
    m_model.extend(event->position());
}

void DrawingCanvas::mouseReleaseEvent(QMouseEvent * /*event*/)
{
    m_model.end();
}

/// At once after a rest, else when the time between two redraws is over.
void DrawingCanvas::followStrokes()
{
    const qint64 left = m_sinceLast.isValid() ? std::max<qint64>(kInterval - m_sinceLast.elapsed(), 0) : 0;
    if (!m_next.isActive() || m_next.remainingTime() > left) {
        m_next.start(static_cast<int>(left));
    }
}

void DrawingCanvas::redraw()
{
    m_sinceLast.start();
    const double scale = window() != nullptr ? window()->effectiveDevicePixelRatio() : 1;
    const QSize pixels = (size() * scale).toSize();
    if (pixels != m_painter.size()) {
        m_painter.reset(pixels, scale);
        m_isAnew = true;
    }
    if (m_painter.paint(m_model.strokes(), m_model.now())) {
        update();
    }
    wakeForFading();
}

void DrawingCanvas::wakeForFading()
{
    const MediaTime now = m_model.now();
    std::optional<qint64> wait;
    for (const DrawingModel::Stroke &stroke : m_model.strokes()) {
        if (stroke.endedAt && stroke.opacity(now) > 0) {
            const auto age = static_cast<qint64>((now - *stroke.endedAt).seconds() * 1000);
            const qint64 left = std::max(kSolid - age, kInterval);
            wait = std::min(wait.value_or(left), left);
        }
    }
    if (wait) {
        m_next.start(static_cast<int>(*wait));
    }
}

QSGNode *DrawingCanvas::updatePaintNode(QSGNode *old, UpdatePaintNodeData * /*data*/)
{
    if (old == nullptr) {
        m_shown.clear(); // they went with their parent
        old = std::make_unique<QSGNode>().release();
    }
    removeGone(*old);
    for (const StrokePainter::Painted &stroke : m_painter.strokes()) {
        show(*old, stroke);
    }
    m_painter.forgetFresh();
    return old;
}

void DrawingCanvas::removeGone(QSGNode &root)
{
    const bool isAnew = std::exchange(m_isAnew, false);
    const auto &strokes = m_painter.strokes();
    std::erase_if(m_shown, [&](const auto &each) {
        const auto &[id, shown] = each;
        if (!isAnew && std::ranges::find(strokes, id, &StrokePainter::Painted::id) != strokes.end()) {
            return false;
        }
        root.removeChildNode(shown.node);
        const std::unique_ptr<QSGNode> removed(shown.node);
        return true;
    });
}

void DrawingCanvas::show(QSGNode &root, const StrokePainter::Painted &stroke)
{
    Shown &shown = m_shown[stroke.id];
    const bool isNew = shown.node == nullptr;
    if (isNew) {
        shown.node = std::make_unique<QSGOpacityNode>().release();
    }
    for (const auto &[tile, picture] : stroke.tiles) {
        if (isNew || stroke.fresh.contains(tile)) {
            showTile(*shown.node, shown.tiles[tile], tile, picture);
        }
    }
    if (isNew) {
        root.appendChildNode(shown.node);
    }
    shown.node->setOpacity(stroke.opacity);
}

void DrawingCanvas::showTile(QSGNode &parent, QSGImageNode *&node, int tile, const QImage &picture)
{
    const bool isNew = node == nullptr;
    if (isNew) {
        const double scale = window()->effectiveDevicePixelRatio();
        const QRect rect = m_painter.rectOf(tile);
        node = window()->createImageNode();
        node->setFiltering(QSGTexture::Nearest);
        node->setOwnsTexture(true);
        node->setRect(QRectF(QPointF(rect.topLeft()) / scale, QSizeF(rect.size()) / scale));
    }
    node->setTexture(window()->createTextureFromImage(picture, QQuickWindow::TextureHasAlphaChannel));
    node->setSourceRect(QRectF(QPointF(0, 0), QSizeF(picture.size())));
    if (isNew) {
        parent.appendChildNode(node); // the renderer takes in no node without a texture
    } else {
        node->markDirty(QSGNode::DirtyMaterial);
    }
}

QRegion DrawingCanvas::visibleRegion() const
{
    QRegion pixels;
    for (const StrokePainter::Painted &stroke : m_painter.strokes()) {
        if (stroke.opacity < kLeastVisible) {
            continue;
        }
        for (const auto &[tile, picture] : stroke.tiles) {
            const QImage mask = picture.createAlphaMask(Qt::ThresholdDither | Qt::AvoidDither);
            pixels += QRegion(QBitmap::fromImage(mask)).translated(m_painter.rectOf(tile).topLeft());
        }
    }
    const double scale = window() != nullptr ? 1 / window()->effectiveDevicePixelRatio() : 1;
    return QTransform::fromScale(scale, scale).map(pixels);
}

} // namespace zivra
