#pragma once

#include "desktop/camera/CameraBackend.h"
#include "desktop/camera/CameraList.h"

#include <memory>

namespace zivra::desktop {

class PipeWireServer;

/// The cameras on the user's PipeWire server: what programs share, virtual cameras, and hardware that only
/// the session manager can drive. While the server is down, asking for the list tries to reach it, every few
/// seconds at most. Outlives its sources.
class PipeWireCameras final : public CameraBackend {
public:
    PipeWireCameras();
    ~PipeWireCameras() override;
    PipeWireCameras(const PipeWireCameras &) = delete;
    PipeWireCameras &operator=(const PipeWireCameras &) = delete;

    [[nodiscard]] std::vector<CaptureDevice> cameras() const override;
    void setChangeHandler(std::function<void()> handler) override;
    [[nodiscard]] std::unique_ptr<CaptureSource> makeSource(const QString &deviceID, QSize size) override;

private:
    CameraList m_list;
    std::shared_ptr<PipeWireServer> m_server; ///< sources keep it too
};

} // namespace zivra::desktop
