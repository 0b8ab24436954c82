#pragma once

#include "desktop/audio/PulseConnection.h"
#include "platform/CaptureDevices.h"

namespace zivra::desktop {

class PulseMicrophones;

/// The microphones of the user's sound server; a sound server has no cameras. Waits for its first
/// answer when asked before it came, for half a second at most.
class PulseDeviceCatalog final : public CaptureDeviceCatalog {
public:
    explicit PulseDeviceCatalog(std::shared_ptr<PulseServer> server);
    ~PulseDeviceCatalog() override;

    [[nodiscard]] std::vector<CaptureDevice> devices(MediaType type) const override;
    [[nodiscard]] std::optional<CaptureDevice> defaultDevice(MediaType type) const override;
    void setChangeHandler(std::function<void()> handler) override;

private:
    std::unique_ptr<PulseMicrophones> m_microphones;
};

} // namespace zivra::desktop
