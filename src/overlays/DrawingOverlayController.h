#pragma once

#include "platform/Screens.h"

#include <cstdint>
#include <optional>

namespace zivra {

/// The transparent sheet over a whole screen that the user draws on. Main thread only.
class DrawingOverlayController {
public:
    virtual ~DrawingOverlayController() = default;

    /// Uses the sheet there is, if there is one.
    virtual void show(const Screen &screen) = 0;
    virtual void hide() = 0;
    virtual void clearStrokes() = 0;
    /// The window number of the sheet, once there is one.
    [[nodiscard]] virtual std::optional<std::uint32_t> panelWindowID() const = 0;
};

} // namespace zivra
