#pragma once

#include "desktop/x11/XcbConnection.h"

#include <QRect>
#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

namespace zivra::desktop {

/// A window as the user knows it, with what the server and the window manager tell about it.
struct ListedWindow {
    /// The application's own window where a window manager has framed it, else the child of the root: the
    /// number that applications and tools know the window by.
    xcb_window_t window = XCB_WINDOW_NONE;
    QRect pixels; ///< within the root window, with its decoration
    QString title;
    QString className; ///< the application, as its windows name it
    int layer = 0;     ///< as in `ShareableWindow`
    bool isOnScreen = false;
    std::optional<std::int64_t> processID;
};

/// All windows but those that cannot be seen by nature or are withdrawn, from the topmost to the lowest. Asks
/// for many at once, so it takes a few round trips whatever their number. Empty when the server has gone.
[[nodiscard]] std::vector<ListedWindow> listWindows(const XcbConnection &connection);

} // namespace zivra::desktop
