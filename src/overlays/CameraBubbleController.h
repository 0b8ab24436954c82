#pragma once

#include "capture/CameraManager.h"
#include "platform/Screens.h"
#include "settings/RecordingChoices.h"

#include <cstdint>
#include <functional>
#include <optional>

namespace zivra {

/// The floating picture of the camera. Main thread only.
class CameraBubbleController {
public:
    virtual ~CameraBubbleController() = default;

    /// Shows what the camera sees; `cameraOnly` is the shape for takes without the screen.
    virtual void show(CameraManager &camera, const Screen &screen, bool cameraOnly, BubbleSize size,
                      bool mirrored) = 0;
    /// Safe when nothing is shown.
    virtual void hide() = 0;
    virtual void resize(BubbleSize size) = 0;
    /// The window number of its panel, once there is one.
    [[nodiscard]] virtual std::optional<std::uint32_t> panelWindowID() const = 0;

    /// The user has chosen another size, or pressed the close button. Set by the owner.
    std::function<void(BubbleSize)> onSize;
    std::function<void()> onClose;
};

} // namespace zivra
