#pragma once

#include "overlays/RecordingControls.h"
#include "platform/Screens.h"

namespace zivra {

/// The floating bar with the buttons of a running recording. Main thread only.
class ControlBarController {
public:
    virtual ~ControlBarController() = default;

    virtual void show(const Screen &screen, RecordingControls &controls) = 0;
    /// Takes the bar off the screen and keeps it. Safe when nothing is shown.
    virtual void orderOut() = 0;
};

} // namespace zivra
