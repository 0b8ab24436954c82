#include "desktop/audio/PulseDeviceCatalog.h"

#include "desktop/audio/PulseMicrophones.h"

#include <utility>

namespace zivra::desktop {

PulseDeviceCatalog::PulseDeviceCatalog(std::shared_ptr<PulseServer> server)
    : m_microphones(std::make_unique<PulseMicrophones>(std::move(server)))
{
}

PulseDeviceCatalog::~PulseDeviceCatalog() = default;

std::vector<CaptureDevice> PulseDeviceCatalog::devices(MediaType type) const
{
    return type == MediaType::Audio ? m_microphones->all() : std::vector<CaptureDevice>();
}

std::optional<CaptureDevice> PulseDeviceCatalog::defaultDevice(MediaType type) const
{
    return type == MediaType::Audio ? m_microphones->standard() : std::nullopt;
}

void PulseDeviceCatalog::setChangeHandler(std::function<void()> handler)
{
    m_microphones->setChangeHandler(std::move(handler));
}

} // namespace zivra::desktop
