#include "desktop/audio/PulseDevices.h"

#include <algorithm>

namespace zivra::desktop {

namespace {

template <typename Predicate>
const PulseInput *firstInput(const PulseDevices &devices, Predicate predicate)
{
    const auto found = std::find_if(devices.inputs.begin(), devices.inputs.end(), predicate);
    return found != devices.inputs.end() ? &*found : nullptr;
}

} // namespace

const PulseInput *monitorOfDefaultOutput(const PulseDevices &devices)
{
    return firstInput(devices, [&](const PulseInput &input) {
        return input.isMonitor && input.monitoredOutput == devices.defaultOutput;
    });
}

const PulseInput *microphoneNamed(const PulseDevices &devices, std::string_view name)
{
    return firstInput(devices,
                      [&](const PulseInput &input) { return !input.isMonitor && input.name == name; });
}

const PulseInput *defaultMicrophone(const PulseDevices &devices)
{
    const auto *standard = microphoneNamed(devices, devices.defaultInput);
    return standard != nullptr
               ? standard
               : firstInput(devices, [](const PulseInput &input) { return !input.isMonitor; });
}

} // namespace zivra::desktop
