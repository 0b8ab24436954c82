#include "overlays/BubbleModel.h"

#include "overlays/Placement.h"

namespace zivra {

namespace {

constexpr QSizeF kCameraOnlyPicture(720, 405);
constexpr QPointF kDefaultDistance(84, 24); ///< from the lower left corner: right of the control bar

constexpr double diameter(BubbleSize size)
{
    switch (size) {
    case BubbleSize::Small:
        return 140;
    case BubbleSize::Medium:
        return 220;
    case BubbleSize::Large:
        return 340;
    }
    return 0;
}

/// Only the lower left corner counts: a bubble may hang over the upper and the right edge.
bool hasCornerIn(const QRectF &area, const QRectF &frame)
{
    return frame.left() >= area.left() && frame.left() < area.right() && frame.bottom() > area.top() &&
           frame.bottom() <= area.bottom();
}

} // namespace

void BubbleModel::set(BubbleSize size, bool mirrored, bool cameraOnly)
{
    m_size = size;
    m_mirrored = mirrored;
    m_cameraOnly = cameraOnly;
    Q_EMIT changed();
}

QSizeF BubbleModel::frameSize(bool cameraOnly, BubbleSize size)
{
    const QSizeF picture = cameraOnly ? kCameraOnlyPicture : QSizeF(diameter(size), diameter(size));
    return picture.grownBy({kMargin, kMargin, kMargin, kMargin});
}

QRectF BubbleModel::frameOn(const QRectF &visibleFrame, const std::optional<QRectF> &current,
                            const std::optional<QRectF> &last) const
{
    const QSizeF size = frameSize(m_cameraOnly, m_size);
    if (m_cameraOnly) {
        return centredIn(visibleFrame, size);
    }
    if (current) {
        return resizedFromLowerLeft(*current, size);
    }
    if (last && hasCornerIn(visibleFrame, *last)) {
        return resizedFromLowerLeft(*last, size);
    }
    return fromLowerLeft(visibleFrame, kDefaultDistance, size);
}

void BubbleModel::chooseSize(int index)
{
    if (onSize) {
        onSize(kAllBubbleSizes.at(static_cast<std::size_t>(index)));
    }
}

void BubbleModel::close()
{
    if (onClose) {
        onClose();
    }
}

} // namespace zivra
