#pragma once

#include "desktop/x11/XcbConnection.h"
#include "desktop/x11/capture/SharedImage.h"

namespace zivra::desktop {

/// Draws the mouse cursor as it is now into a picture whose top left lies at `origin` on the root window.
void paintCursor(const XcbConnection &connection, SharedImage &image, QPoint origin);

} // namespace zivra::desktop
