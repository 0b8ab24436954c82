#pragma once

#include "platform/MediaTime.h"
#include "platform/MovieAsset.h"

#include <QByteArray>
#include <QSize>

namespace zivra::desktop {

/// The picture that a movie shows at a time, or its last one where it ends before, as a JPEG image of no more
/// than that size, upright as the track says. `quality` from 0 to 1. Throws `PlatformError` without one.
///
/// Decodes from the key frame before on, in a hurry: details may be softer or coarser than in a player.
[[nodiscard]] QByteArray stillJPEG(const MovieAsset &asset, MediaTime time, QSize maximum, double quality);

} // namespace zivra::desktop
