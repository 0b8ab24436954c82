#pragma once

#include "desktop/x11/panels/PanelStack.h"
#include "platform/PanelSurface.h"

namespace zivra::desktop {

/// Makes the panels of an X11 desktop, with per-pixel transparency where a compositing manager runs. Made
/// after the application object and before any other Qt Quick window: it settles how all of them are drawn.
class X11PanelSurfaces final : public PanelSurfaces {
public:
    /// Throws `PlatformError` without a display.
    X11PanelSurfaces();

    [[nodiscard]] std::unique_ptr<PanelSurface> makePanel(const PanelStyle &style) override;

private:
    PanelStack m_stack;
};

} // namespace zivra::desktop
