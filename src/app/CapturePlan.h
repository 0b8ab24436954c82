#pragma once

#include "platform/ContentFilter.h"
#include "platform/Screens.h"
#include "platform/ShareableContent.h"
#include "settings/RecordingChoices.h"

#include <QRectF>
#include <QSize>
#include <QSizeF>

#include <cstdint>
#include <optional>
#include <set>
#include <vector>

namespace zivra {

/// What a screen recording captures. Made once, only ever replaced; survives a restart.
struct CapturePlan {
    std::uint32_t displayID = 0;
    CaptureArea area = CaptureArea::FullScreen;
    /// Points, origin at the display's top left. Absent for `fullScreen`: the whole display.
    std::optional<QRectF> sourceRect;
    std::optional<std::uint32_t> windowID; ///< for `window` only

    friend bool operator==(const CapturePlan &, const CapturePlan &) = default;
};

/// The screen under the mouse, else the main one. A default-made screen when there is none at all.
[[nodiscard]] Screen screenWithMouse(const Screens &screens);
[[nodiscard]] std::optional<Screen> screenWithID(const Screens &screens, std::uint32_t displayID);

/// The window's rectangle on the display under its middle, cut off at the display's edges. Throws
/// `ZivraError` when there is no such window, no display, or nothing of the window on it.
[[nodiscard]] CapturePlan planForWindow(const ShareableContent &content, std::uint32_t windowID);

/// What the take shows: for a window only that and the kept ones, otherwise everything but the windows
/// of process `ownProcessID` that are not kept, also of those it opens during the take. `kept` holds window
/// numbers.
[[nodiscard]] ContentFilter contentFilter(const CapturePlan &plan, const ShareableContent &content,
                                          const std::set<std::uint32_t> &kept, std::int64_t ownProcessID);

/// The movie's size in pixels: `points` times `scale`, held to a height of `maximumHeight`, never
/// enlarged, each side even and at least 2.
[[nodiscard]] QSize outputSize(const QSizeF &points, double scale, int maximumHeight);

} // namespace zivra
