#pragma once

#include "desktop/x11/XcbConnection.h"

#include <QRect>
#include <QRectF>

#include <cstdint>
#include <optional>

namespace zivra::desktop {

/// The rectangle of the root window that a capture shows, in pixels: a display, or a part of it given in
/// points from its top left. Absent when there is no such display.
[[nodiscard]] std::optional<QRect> captureArea(const XcbConnection &connection, std::uint32_t displayID,
                                               const std::optional<QRectF> &sourceRect);

} // namespace zivra::desktop
