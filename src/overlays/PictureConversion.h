#pragma once

#include "platform/MediaSample.h"

#include <QImage>
#include <QSize>

namespace zivra {

/// The middle of a camera's picture, scaled to fill `mask`'s size, flipped if `mirrored`, premultiplied with
/// the mask's opacity (Format_Alpha8). BT.601 as cameras deliver it.
[[nodiscard]] QImage convertPicture(const VideoFrame &frame, const QImage &mask, bool mirrored);

} // namespace zivra
