#pragma once

#include "platform/CaptureDevices.h"
#include "platform/CaptureSources.h"

#include <memory>
#include <vector>

namespace zivra::desktop {

class CameraBackend;

/// All cameras of this desktop: those of the kernel, then those that programs share on PipeWire, and when
/// the environment asks for it with ZIVRA_DEMO_CAMERA=1 a drawn one. The first is the default one. It has
/// no microphones.
class DesktopCameras final : public CaptureDeviceCatalog, public CameraSourceFactory {
public:
    DesktopCameras();
    explicit DesktopCameras(std::vector<std::unique_ptr<CameraBackend>> backends);
    ~DesktopCameras() override;

    [[nodiscard]] std::vector<CaptureDevice> devices(MediaType type) const override;
    [[nodiscard]] std::optional<CaptureDevice> defaultDevice(MediaType type) const override;
    void setChangeHandler(std::function<void()> handler) override;
    [[nodiscard]] std::unique_ptr<CaptureSource> makeCameraSource(const QString &deviceID,
                                                                  QSize size) override;

private:
    std::vector<std::unique_ptr<CameraBackend>> m_backends;
};

} // namespace zivra::desktop
