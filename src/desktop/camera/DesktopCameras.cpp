#include "desktop/camera/DesktopCameras.h"

#include "desktop/camera/CameraBackend.h"
#include "desktop/camera/DemoCamera.h"
#include "desktop/camera/PipeWireCameras.h"
#include "desktop/camera/V4L2Cameras.h"
#include "platform/PlatformError.h"

#include <iterator>
#include <utility>

namespace zivra::desktop {

namespace {

std::vector<std::unique_ptr<CameraBackend>> backendsOfThisDesktop()
{
    std::vector<std::unique_ptr<CameraBackend>> backends;
    backends.push_back(std::make_unique<V4L2Cameras>(makeKernelV4L2()));
    backends.push_back(std::make_unique<PipeWireCameras>());
    if (qgetenv("ZIVRA_DEMO_CAMERA") == "1") {
        backends.push_back(std::make_unique<DemoCamera>());
    }
    return backends;
}

} // namespace

DesktopCameras::DesktopCameras() : DesktopCameras(backendsOfThisDesktop()) {}

DesktopCameras::DesktopCameras(std::vector<std::unique_ptr<CameraBackend>> backends)
    : m_backends(std::move(backends))
{
}

DesktopCameras::~DesktopCameras() = default;

std::vector<CaptureDevice> DesktopCameras::devices(MediaType type) const
{
    std::vector<CaptureDevice> all;
    if (type == MediaType::Video) {
        for (const auto &backend : m_backends) {
            auto some = backend->cameras();
            std::move(some.begin(), some.end(), std::back_inserter(all));
        }
    }
    return all;
}

std::optional<CaptureDevice> DesktopCameras::defaultDevice(MediaType type) const
{
    const auto all = devices(type);
    return all.empty() ? std::nullopt : std::optional(all.front());
}

void DesktopCameras::setChangeHandler(std::function<void()> handler)
{
    for (const auto &backend : m_backends) {
        backend->setChangeHandler(handler);
    }
}

std::unique_ptr<CaptureSource> DesktopCameras::makeCameraSource(const QString &deviceID, QSize size)
{
    for (const auto &backend : m_backends) {
        if (auto source = backend->makeSource(deviceID, size)) {
            return source;
        }
    }
    throw PlatformError(QStringLiteral("There is no camera “%1”.").arg(deviceID));
}

} // namespace zivra::desktop
