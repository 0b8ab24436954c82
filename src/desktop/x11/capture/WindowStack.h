#pragma once

#include "desktop/x11/XcbConnection.h"

#include <QRect>

#include <cstdint>
#include <vector>

namespace zivra::desktop {

/// A child of the root window that can show something.
struct TopLevel {
    xcb_window_t window = XCB_WINDOW_NONE;
    QRect outline; ///< pixels of the root window, with its border
    int border = 0;
    xcb_visualid_t visual = 0;
    bool isViewable = false;

    friend bool operator==(const TopLevel &, const TopLevel &) = default;
};

/// From the lowest to the topmost. Takes two round trips.
[[nodiscard]] std::vector<TopLevel> topLevels(const XcbConnection &connection);

/// The child of the root that each of the windows is, or is in: a window manager's frame. None for a window
/// that is gone.
[[nodiscard]] std::vector<xcb_window_t> topLevelsOf(const XcbConnection &connection,
                                                    const std::vector<std::uint32_t> &windows);

} // namespace zivra::desktop
