#pragma once

#include "platform/CaptureDevices.h"

namespace zivra::desktop {

/// The cameras of one catalog and the microphones of another, each of which outlives it.
class ComposedDeviceCatalog final : public CaptureDeviceCatalog {
public:
    ComposedDeviceCatalog(CaptureDeviceCatalog &cameras, CaptureDeviceCatalog &microphones)
        : m_cameras(cameras),
          m_microphones(microphones)
    {
    }

    [[nodiscard]] std::vector<CaptureDevice> devices(MediaType type) const override
    {
        return catalogOf(type).devices(type);
    }
    [[nodiscard]] std::optional<CaptureDevice> defaultDevice(MediaType type) const override
    {
        return catalogOf(type).defaultDevice(type);
    }
    void setChangeHandler(std::function<void()> handler) override
    {
        m_cameras.setChangeHandler(handler);
        m_microphones.setChangeHandler(std::move(handler));
    }

private:
    [[nodiscard]] CaptureDeviceCatalog &catalogOf(MediaType type) const
    {
        return type == MediaType::Video ? m_cameras : m_microphones;
    }

    CaptureDeviceCatalog &m_cameras;
    CaptureDeviceCatalog &m_microphones;
};

} // namespace zivra::desktop
