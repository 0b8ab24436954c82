#include "ui/VectorItem.h"

#include <QImage>
#include <QPainter>
#include <QQuickWindow>
#include <QSGRenderNode>
#include <QSGRendererInterface>

#include <memory>
#include <utility>

namespace zivra {

namespace {

class PaintedNode final : public QSGRenderNode {
public:
    explicit PaintedNode(QQuickWindow *window) : m_window(window) {}

    void set(VectorItem::Painting painting, QSizeF size)
    {
        m_painting = std::move(painting);
        m_size = size;
        m_picture = {};
        markDirty(QSGNode::DirtyMaterial | QSGNode::DirtyGeometry);
    }

    void render(const RenderState *state) override
    {
        auto *const painter = static_cast<QPainter *>(
            m_window->rendererInterface()->getResource(m_window, QSGRendererInterface::PainterResource));
        const double scale = painter->device()->devicePixelRatioF();
        const QRectF place = (matrix()->toTransform() * QTransform::fromScale(scale, scale)).mapRect(rect());
        if (place.isEmpty()) {
            return;
        }
        paintFor(place);
        if (const QRegion *const clip = state->clipRegion(); clip != nullptr && !clip->isEmpty()) {
            painter->setClipRegion(*clip);
        }
        painter->setTransform(QTransform::fromScale(1 / scale, 1 / scale));
        painter->setOpacity(inheritedOpacity());
        painter->drawImage(place.toAlignedRect().topLeft(), m_picture);
    }

    [[nodiscard]] StateFlags changedStates() const override { return {}; }
    [[nodiscard]] RenderingFlags flags() const override { return BoundedRectRendering; }
    [[nodiscard]] QRectF rect() const override { return {QPointF(0, 0), m_size}; }

private:
    /// `place`: where the item lands, in pixels.
    void paintFor(const QRectF &place)
    {
        const QRect pixels = place.toAlignedRect();
        const QRectF within = place.translated(-pixels.topLeft());
        if (!m_picture.isNull() && within == m_within) {
            return;
        }
        m_within = within;
        m_picture = QImage(pixels.size(), QImage::Format_ARGB32_Premultiplied);
        m_picture.fill(Qt::transparent);
        QPainter painter(&m_picture);
        painter.translate(within.topLeft());
        painter.scale(within.width() / m_size.width(), within.height() / m_size.height());
        m_painting(painter);
    }

    QQuickWindow *m_window;
    VectorItem::Painting m_painting;
    QSizeF m_size;
    QImage m_picture;
    QRectF m_within; ///< where the item is in the picture, in pixels
};

} // namespace

VectorItem::VectorItem(QQuickItem *parent) : QQuickItem(parent)
{
    setFlag(ItemHasContents);
}

QSGNode *VectorItem::updatePaintNode(QSGNode *old, UpdatePaintNodeData * /*data*/)
{
    auto *node = static_cast<PaintedNode *>(old);
    if (node == nullptr) {
        node = std::make_unique<PaintedNode>(window()).release();
    }
    node->set(painting(), size());
    return node;
}

} // namespace zivra
