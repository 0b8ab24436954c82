#pragma once

#include "desktop/x11/XcbConnection.h"

#include <vector>

namespace zivra::desktop {

/// A window that takes part in the stacking, with the application's window in it.
struct StackedWindow {
    xcb_window_t topLevel = XCB_WINDOW_NONE; ///< child of the root
    xcb_window_t client = XCB_WINDOW_NONE;   ///< what a window manager manages; the top level itself if none
    bool isManaged = false;
    bool isViewable = false;       ///< the top level is mapped
    bool overridesRedirect = true; ///< of the client
};

/// The children of the root that can show something, from the topmost to the lowest. Those a window manager
/// has nothing to do with are left out while they are not mapped, and all that are withdrawn.
[[nodiscard]] std::vector<StackedWindow> stackedWindows(const XcbConnection &connection);

} // namespace zivra::desktop
