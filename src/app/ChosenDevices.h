#pragma once

#include "capture/Devices.h"
#include "settings/Settings.h"

#include <algorithm>
#include <optional>
#include <vector>

namespace zivra {

[[nodiscard]] inline std::optional<CaptureDevice> deviceWithID(const std::vector<CaptureDevice> &devices,
                                                               const QString &uniqueID)
{
    const auto found = std::ranges::find(devices, uniqueID, &CaptureDevice::uniqueID);
    return found != devices.end() ? std::optional(*found) : std::nullopt;
}

/// The camera of the settings, or the desktop's first choice where that one is not there.
[[nodiscard]] inline std::optional<CaptureDevice> chosenCamera(const Settings &settings,
                                                               const Devices &devices)
{
    const auto chosen = deviceWithID(devices.cameras(), settings.cameraID());
    return chosen ? chosen : devices.defaultCamera();
}

/// The same for the microphone; none while it is switched off.
[[nodiscard]] inline std::optional<CaptureDevice> chosenMicrophone(const Settings &settings,
                                                                   const Devices &devices)
{
    if (!settings.micEnabled()) {
        return std::nullopt;
    }
    const auto chosen = deviceWithID(devices.microphones(), settings.micID());
    return chosen ? chosen : devices.defaultMicrophone();
}

} // namespace zivra
