#pragma once

#include "app/CapturePlan.h"
#include "capture/ScreenTake.h"
#include "overlays/AreaSelector.h"
#include "platform/Authorization.h"
#include "platform/Screens.h"
#include "platform/ShareableContent.h"
#include "settings/Settings.h"

#include <QCoroTask>

#include <cstdint>
#include <set>

namespace zivra {

/// Settles what a screen recording captures, in two steps: the plan, which may ask the user, and from the
/// plan and the windows of the moment what the recorder is told. Main thread only.
class CapturePlanner {
public:
    /// Everything outlives the planner and its tasks.
    struct Collaborators {
        Settings &settings;
        Screens &screens;
        ContentQuery &content;
        ScreenCaptureAccess &screenAccess;
        AreaSelector &areaSelector;
    };

    explicit CapturePlanner(const Collaborators &collaborators) : m_with(collaborators) {}

    /// Checks the right to capture the screen first, for every area. Throws `ZivraError`, `cancelled` among
    /// them, or what the desktop reports.
    [[nodiscard]] QCoro::Task<CapturePlan> makePlan();
    /// The filter, rectangle, size, sound of the computer and clicks of a take. To be asked for when the
    /// overlays are on the screen: `kept` are the window numbers of those that belong in the picture. Throws
    /// `noDisplay` when the plan's display is gone, or what the desktop reports.
    [[nodiscard]] QCoro::Task<ScreenRecorderOptions> takeOptions(CapturePlan plan,
                                                                 std::set<std::uint32_t> kept);

private:
    [[nodiscard]] QCoro::Task<CapturePlan> planWindow();
    [[nodiscard]] QCoro::Task<CapturePlan> planCustomArea();
    [[nodiscard]] CapturePlan planFullScreen() const;
    [[nodiscard]] QSize takeSize(const CapturePlan &plan, const ShareableDisplay &display) const;

    Collaborators m_with;
};

} // namespace zivra
