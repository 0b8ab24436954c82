#pragma once

#include "desktop/frames/FramePool.h"

#include <QRect>

#include <cstdint>

namespace zivra::desktop {

/// Draws the demo camera's picture of that number, as told there.
void drawDemoPicture(FrameBuffer &picture, std::int64_t number);

inline constexpr int kDemoRate = 30; ///< pictures a second

} // namespace zivra::desktop
