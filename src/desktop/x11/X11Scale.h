#pragma once

#include "desktop/x11/XcbConnection.h"

namespace zivra::desktop {

/// Pixels a point, the same for every display of the server and never 0: the resolution that the desktop
/// asks for (Xft.dpi) as a multiple of 96, at least 1, times $QT_SCALE_FACTOR. That is what Qt's own windows
/// use, so that geometry in points means the same to both.
[[nodiscard]] double pixelsPerPoint(const XcbConnection &connection);

} // namespace zivra::desktop
