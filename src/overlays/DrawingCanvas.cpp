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
constexpr qint64 kSolid = 3000;  // milliseconds after which an ended stroke begins to fade

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
    if (pixels != m_painter.picture().size()) {
        m_changed += m_painter.inked();
        m_painter.reset(pixels, scale);
    }
    m_changed += m_painter.paint(m_model.strokes(), m_model.now());
    if (!m_changed.isEmpty()) {
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
        m_tiles.clear(); // they went with their parent
        old = std::make_unique<QSGNode>().release();
        m_changed = m_painter.inked();
    }
    const QRegion inked = m_painter.inked();
    for (const QRect &rect : std::exchange(m_changed, {})) {
        constexpr int kSide = StrokePainter::kTileSide;
        for (int top = rect.top() / kSide * kSide; top <= rect.bottom(); top += kSide) {
            for (int left = rect.left() / kSide * kSide; left <= rect.right(); left += kSide) {
                showTile(*old, QRect(left, top, kSide, kSide) & m_painter.picture().rect(), inked);
            }
        }
    }
    return old;
}

void DrawingCanvas::showTile(QSGNode &parent, const QRect &tile, const QRegion &inked)
{
    constexpr int kTilesInRow = 1000; // more than any screen has
    const int number =
        tile.top() / StrokePainter::kTileSide * kTilesInRow + tile.left() / StrokePainter::kTileSide;
    auto &node = m_tiles[number];
    if (!inked.intersects(tile)) {
        if (node != nullptr) {
            parent.removeChildNode(node);
            const std::unique_ptr<QSGImageNode> removed(node);
        }
        m_tiles.erase(number);
        return;
    }
    const double scale = window()->effectiveDevicePixelRatio();
    const bool isNew = node == nullptr;
    if (isNew) {
        node = window()->createImageNode();
        node->setFiltering(QSGTexture::Nearest);
        node->setOwnsTexture(true);
        node->setRect(QRectF(QPointF(tile.topLeft()) / scale, QSizeF(tile.size()) / scale));
    }
    node->setTexture(window()->createTextureFromImage(m_painter.picture().copy(tile),
                                                      QQuickWindow::TextureHasAlphaChannel));
    node->setSourceRect(QRectF(QPointF(0, 0), QSizeF(tile.size())));
    if (isNew) {
        parent.appendChildNode(node); // the renderer takes in no node without a texture
    } else {
        node->markDirty(QSGNode::DirtyMaterial);
    }
}

QRegion DrawingCanvas::visibleRegion() const
{
    QRegion pixels;
    for (const QRect &rect : m_painter.inked()) {
        const QImage mask =
            m_painter.picture().copy(rect).createAlphaMask(Qt::ThresholdDither | Qt::AvoidDither);
        pixels += QRegion(QBitmap::fromImage(mask)).translated(rect.topLeft());
    }
    const double scale = window() != nullptr ? 1 / window()->effectiveDevicePixelRatio() : 1;
    return QTransform::fromScale(scale, scale).map(pixels);
}

} // namespace zivra
