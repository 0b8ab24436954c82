#pragma once

#include <pulse/channelmap.h>
#include <pulse/sample.h>

#include <string>
#include <string_view>
#include <vector>

namespace zivra::desktop {

/// Something that the sound server can record: a microphone, or the monitor of an output.
struct PulseInput {
    std::string name; ///< the server's name for it, the same across restarts and replugging
    std::string description;
    bool isMonitor = false;
    std::string monitoredOutput; ///< the output that a monitor listens to
    pa_sample_spec sampleSpec{};
    pa_channel_map channelMap{};
};

/// What the sound server has, at one moment.
struct PulseDevices {
    std::string defaultOutput; ///< empty when there is none
    std::string defaultInput;  ///< may name a monitor
    std::vector<PulseInput> inputs;
};

/// The choices of what to record. Always by name and never by the server's aliases, which some servers
/// resolve to a microphone where a monitor is meant. Null when there is no such device; the result points
/// into `devices`.
[[nodiscard]] const PulseInput *monitorOfDefaultOutput(const PulseDevices &devices);
/// Null for the name of a monitor too: what the computer plays never passes for a microphone.
[[nodiscard]] const PulseInput *microphoneNamed(const PulseDevices &devices, std::string_view name);
/// The first microphone when the server's default is a monitor or is missing.
[[nodiscard]] const PulseInput *defaultMicrophone(const PulseDevices &devices);

} // namespace zivra::desktop
