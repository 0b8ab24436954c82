#include "app/CapturePlanner.h"

#include "capture/ZivraError.h"

#include <QCoreApplication>
#include <QCoroFuture>

#include <algorithm>

namespace zivra {

QCoro::Task<CapturePlan> CapturePlanner::makePlan()
{
    if (!m_with.screenAccess.preflight()) {
        m_with.screenAccess.request();
        throw ZivraError(ZivraError::screenPermission);
    }
    CapturePlan plan;
    switch (m_with.settings.captureArea()) {
    case CaptureArea::FullScreen:
        plan = planFullScreen();
        break;
    case CaptureArea::Window:
        plan = co_await planWindow();
        break;
    case CaptureArea::CustomArea:
        plan = co_await planCustomArea();
        break;
    }
    co_return plan;
}

CapturePlan CapturePlanner::planFullScreen() const
{
    const auto chosen = screenWithID(m_with.screens, m_with.settings.displayID());
    const Screen screen = chosen ? *chosen : screenWithMouse(m_with.screens);
    return {screen.displayID, CaptureArea::FullScreen, std::nullopt, std::nullopt};
}

QCoro::Task<CapturePlan> CapturePlanner::planWindow()
{
    const ShareableContent content = co_await m_with.content.shareableContent(true, true);
    const CapturePlan plan = planForWindow(content, m_with.settings.windowID());
    const auto window = std::ranges::find(content.windows, *plan.windowID, &ShareableWindow::windowID);
    if (window->owningApplication) {
        m_with.content.activateApplication(window->owningApplication->processID);
    }
    co_return plan;
}

QCoro::Task<CapturePlan> CapturePlanner::planCustomArea()
{
    const Screen screen = screenWithMouse(m_with.screens);
    const std::optional<QRectF> rectangle = co_await m_with.areaSelector.select(screen);
    if (!rectangle) {
        throw ZivraError(ZivraError::cancelled);
    }
    co_return CapturePlan{screen.displayID, CaptureArea::CustomArea, *rectangle, std::nullopt};
}

QCoro::Task<ScreenRecorderOptions> CapturePlanner::takeOptions(CapturePlan plan, std::set<std::uint32_t> kept)
{
    const ShareableContent content = co_await m_with.content.shareableContent(false, true);
    const auto display = std::ranges::find(content.displays, plan.displayID, &ShareableDisplay::displayID);
    if (display == content.displays.end()) {
        throw ZivraError(ZivraError::noDisplay);
    }
    ScreenRecorderOptions options;
    options.filter = contentFilter(plan, content, kept, QCoreApplication::applicationPid());
    options.sourceRect = plan.sourceRect;
    options.outputSize = takeSize(plan, *display);
    options.captureSystemAudio = m_with.settings.systemAudio();
    options.showClicks = m_with.settings.highlightClicks();
    co_return options;
}

QSize CapturePlanner::takeSize(const CapturePlan &plan, const ShareableDisplay &display) const
{
    constexpr double kScaleOfUnknownScreen = 2;
    const auto screen = screenWithID(m_with.screens, plan.displayID);
    return outputSize(plan.sourceRect ? plan.sourceRect->size() : display.frame.size(),
                      screen ? screen->backingScaleFactor : kScaleOfUnknownScreen,
                      rawValue(m_with.settings.quality()));
}

} // namespace zivra
