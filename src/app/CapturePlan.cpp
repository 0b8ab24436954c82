#include "app/CapturePlan.h"

#include "capture/ZivraError.h"

#include <algorithm>
#include <cmath>

namespace zivra {

namespace {

/// Left and top edges belong to a screen, right and bottom ones to its neighbours.
bool containsMouse(const QRectF &frame, const QPointF &point)
{
    return point.x() >= frame.left() && point.x() < frame.right() && point.y() >= frame.top() &&
           point.y() < frame.bottom();
}

int evenSide(double pixels)
{
    return std::max(2, static_cast<int>(std::round(pixels / 2) * 2));
}

} // namespace

Screen screenWithMouse(const Screens &screens)
{
    const std::vector<Screen> all = screens.screens();
    if (all.empty()) {
        return {};
    }
    const QPointF mouse = screens.mouseLocation();
    const auto found =
        std::ranges::find_if(all, [&](const Screen &screen) { return containsMouse(screen.frame, mouse); });
    return found != all.end() ? *found : all.front();
}

std::optional<Screen> screenWithID(const Screens &screens, std::uint32_t displayID)
{
    const std::vector<Screen> all = screens.screens();
    const auto found = std::ranges::find(all, displayID, &Screen::displayID);
    return found != all.end() ? std::optional(*found) : std::nullopt;
}

CapturePlan planForWindow(const ShareableContent &content, std::uint32_t windowID)
{
    const auto window = std::ranges::find(content.windows, windowID, &ShareableWindow::windowID);
    if (window == content.windows.end()) {
        throw ZivraError(ZivraError::noWindow);
    }
    if (content.displays.empty()) {
        throw ZivraError(ZivraError::noDisplay);
    }
    const QPointF middle = window->frame.center();
    auto display = std::ranges::find_if(content.displays, [&](const ShareableDisplay &candidate) {
        return candidate.frame.contains(middle);
    });
    if (display == content.displays.end()) {
        display = content.displays.begin();
    }
    const QRectF local = window->frame.translated(-display->frame.topLeft());
    const QRectF visible = local.intersected(QRectF(QPointF(0, 0), display->frame.size()));
    if (visible.isEmpty()) {
        throw ZivraError(ZivraError::noWindow);
    }
    return {display->displayID, CaptureArea::Window, visible, windowID};
}

ContentFilter contentFilter(const CapturePlan &plan, const ShareableContent &content,
                            const std::set<std::uint32_t> &kept, std::int64_t ownProcessID)
{
    const bool onlyOneWindow = plan.area == CaptureArea::Window && plan.windowID.has_value();
    ContentFilter filter;
    filter.kind = onlyOneWindow ? ContentFilter::Kind::DisplayIncludingWindows
                                : ContentFilter::Kind::DisplayExcludingWindows;
    filter.displayID = plan.displayID;
    if (!onlyOneWindow) {
        filter.excludedProcessID = ownProcessID;
        filter.keptWindowIDs.assign(kept.begin(), kept.end());
    }
    for (const ShareableWindow &window : content.windows) {
        const bool isKept = kept.contains(window.windowID);
        const bool isOurs = window.owningApplication && window.owningApplication->processID == ownProcessID;
        if (onlyOneWindow ? isKept || window.windowID == *plan.windowID : isOurs && !isKept) {
            filter.windowIDs.push_back(window.windowID);
        }
    }
    return filter;
}

QSize outputSize(const QSizeF &points, double scale, int maximumHeight)
{
    double width = points.width() * scale;
    double height = points.height() * scale;
    if (maximumHeight < height) {
        const double factor = maximumHeight / height;
        width *= factor;
        height *= factor;
    }
    return {evenSide(width), evenSide(height)};
}

} // namespace zivra
