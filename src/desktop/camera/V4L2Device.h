#pragma once

#include "desktop/camera/CameraMode.h"
#include "desktop/camera/V4L2System.h"
#include "platform/CaptureDevices.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace zivra::desktop {

/// An open video device, asked what it is and can do. The terms are those of the kernel's documentation,
/// "Linux Media Infrastructure userspace API", part I.
class V4L2Device {
public:
    /// Throws `PlatformError`.
    V4L2Device(std::shared_ptr<V4L2System> system, const QString &path);
    ~V4L2Device();
    V4L2Device(const V4L2Device &) = delete;
    V4L2Device &operator=(const V4L2Device &) = delete;

    [[nodiscard]] V4L2System &system() const { return *m_system; }
    [[nodiscard]] int descriptor() const { return m_descriptor; }
    /// False with `errno` when the device refuses.
    [[nodiscard]] bool control(unsigned long request, void *argument) const
    {
        return m_system->control(m_descriptor, request, argument) >= 0;
    }

    /// Absent for what is not a camera that we can record.
    [[nodiscard]] std::optional<CaptureDevice> camera(const QString &persistentName) const;
    [[nodiscard]] std::vector<CameraMode> modes() const;

private:
    void addSizes(std::vector<CameraMode> &modes, CameraPixels pixels, std::uint32_t fourcc) const;
    [[nodiscard]] double bestRate(std::uint32_t fourcc, QSize size) const;

    std::shared_ptr<V4L2System> m_system;
    int m_descriptor;
};

[[nodiscard]] std::optional<CameraPixels> pixelsOf(std::uint32_t fourcc);
[[nodiscard]] std::uint32_t fourccOf(CameraPixels pixels);

/// The cameras among the devices, with the file of each. Those that cannot be opened are left out.
struct V4L2Camera {
    CaptureDevice device;
    QString path;
};
[[nodiscard]] std::vector<V4L2Camera> findV4L2Cameras(const std::shared_ptr<V4L2System> &system);

} // namespace zivra::desktop
