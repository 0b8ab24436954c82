#pragma once

#include <QFuture>
#include <QRectF>
#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

namespace zivra {

/// The application that a window belongs to.
struct WindowOwner {
    std::int64_t processID = 0;
    QString name;
};

/// A window that can be recorded. `windowID` is the number the desktop gives it, the same that
/// our own windows report of themselves.
struct ShareableWindow {
    std::uint32_t windowID = 0;
    QRectF frame; ///< points, origin at the top left of the main display; with its decoration
    QString title;
    int layer = 0; ///< 0 for ordinary windows, above it for docks, notifications and overlays
    bool isOnScreen = true;
    std::optional<WindowOwner> owningApplication;
};

struct ShareableDisplay {
    std::uint32_t displayID = 0;
    QRectF frame; ///< points, origin at the top left of the main display
};

/// What can be recorded at one moment. Windows come from the topmost to the lowest.
struct ShareableContent {
    std::vector<ShareableDisplay> displays;
    std::vector<ShareableWindow> windows;
};

/// Asks the desktop what can be recorded, and brings applications forward. Main thread only.
class ContentQuery {
public:
    virtual ~ContentQuery() = default;

    /// Fails with a `PlatformError`. `excludingDesktopWindows` leaves out wallpaper and desktop-icon
    /// windows, `onScreenWindowsOnly` what is minimised, hidden or on another workspace.
    [[nodiscard]] virtual QFuture<ShareableContent> shareableContent(bool excludingDesktopWindows,
                                                                     bool onScreenWindowsOnly) = 0;
    /// Brings the windows of a running application forward; nothing happens when there is none.
    virtual void activateApplication(std::int64_t processID) = 0;
};

} // namespace zivra
