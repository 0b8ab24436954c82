#include "desktop/x11/capture/CaptureArea.h"

#include "desktop/x11/Monitors.h"

#include <algorithm>
#include <cmath>

namespace zivra::desktop {

std::optional<QRect> captureArea(const XcbConnection &connection, std::uint32_t displayID,
                                 const std::optional<QRectF> &sourceRect)
{
    const MonitorLayout layout(connection);
    const auto found = std::ranges::find(layout.monitors(), displayID, &Monitor::displayID);
    if (found == layout.monitors().end()) {
        return std::nullopt;
    }
    if (!sourceRect) {
        return found->pixels;
    }
    const auto pixels = [&](double points) { return static_cast<int>(std::lround(points * layout.scale())); };
    return QRect(found->pixels.x() + pixels(sourceRect->x()), found->pixels.y() + pixels(sourceRect->y()),
                 std::max(1, pixels(sourceRect->width())), std::max(1, pixels(sourceRect->height())));
}

} // namespace zivra::desktop
