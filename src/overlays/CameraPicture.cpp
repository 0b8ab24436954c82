#include "overlays/CameraPicture.h"

#include "overlays/PictureConversion.h"

#include <QPainter>
#include <QQuickWindow>
#include <QSGImageNode>

#include <algorithm>
#include <utility>

namespace zivra {

CameraPicture::CameraPicture(QQuickItem *parent) : QQuickItem(parent)
{
    setFlag(ItemHasContents);
    connect(this, &CameraPicture::changed, this, &QQuickItem::update);
}

CameraPicture::~CameraPicture()
{
    setPreview(nullptr);
}

void CameraPicture::setPreview(PicturePreview *preview)
{
    if (PicturePreview *const before = std::exchange(m_preview, preview)) {
        before->setHandler({});
    }
    if (m_preview != nullptr) {
        m_preview->setHandler([this] { update(); });
        update();
    }
}

QSGNode *CameraPicture::updatePaintNode(QSGNode *old, UpdatePaintNodeData * /*data*/)
{
    const double scale = window()->effectiveDevicePixelRatio();
    const QSize pixels = (size() * scale).toSize();
    const auto frame = m_preview != nullptr ? m_preview->latest() : nullptr;
    if (!frame || pixels.isEmpty()) {
        const std::unique_ptr<QSGNode> gone(old); // an earlier camera's last picture is not this one's
        return nullptr;
    }
    auto *node = static_cast<QSGImageNode *>(old);
    if (node == nullptr) {
        node = window()->createImageNode();
        node->setOwnsTexture(true);
        node->setFiltering(QSGTexture::Nearest);
    }
    makeMask(pixels, scale);
    node->setTexture(window()->createTextureFromImage(convertPicture(*frame, m_mask, m_mirrored),
                                                      QQuickWindow::TextureHasAlphaChannel));
    node->setRect(boundingRect());
    node->setSourceRect(QRectF(QPointF(0, 0), QSizeF(pixels)));
    node->markDirty(QSGNode::DirtyMaterial);
    return node;
}

void CameraPicture::makeMask(QSize size, double scale)
{
    if (m_mask.size() == size && m_maskedRadius == m_cornerRadius) {
        return;
    }
    m_maskedRadius = m_cornerRadius;
    m_mask = QImage(size, QImage::Format_Alpha8);
    m_mask.fill(0);
    QPainter painter(&m_mask);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::black);
    const double radius =
        m_cornerRadius < 0 ? std::min(size.width(), size.height()) / 2.0 : m_cornerRadius * scale;
    painter.drawRoundedRect(QRectF(QPointF(0, 0), QSizeF(size)), radius, radius);
}

} // namespace zivra
