#pragma once

#include "desktop/camera/CameraBackend.h"
#include "desktop/camera/CameraList.h"
#include "desktop/camera/V4L2System.h"

#include <memory>
#include <thread>

namespace zivra::desktop {

/// The kernel's cameras. A thread of its own lists them, as opening a camera can take a while, and again
/// whenever a device file comes, goes or changes its rights; otherwise it sleeps.
class V4L2Cameras final : public CameraBackend {
public:
    /// `folder` is where the device files are.
    explicit V4L2Cameras(std::shared_ptr<V4L2System> system, const QString &folder = QStringLiteral("/dev"));
    ~V4L2Cameras() override;
    V4L2Cameras(const V4L2Cameras &) = delete;
    V4L2Cameras &operator=(const V4L2Cameras &) = delete;

    [[nodiscard]] std::vector<CaptureDevice> cameras() const override { return m_list.all(); }
    void setChangeHandler(std::function<void()> handler) override
    {
        m_list.setChangeHandler(std::move(handler));
    }
    [[nodiscard]] std::unique_ptr<CaptureSource> makeSource(const QString &deviceID, QSize size) override;

private:
    void watch();

    std::shared_ptr<V4L2System> m_system;
    CameraList m_list;
    int m_changes; ///< an inotify descriptor, owned
    int m_wakeUp;  ///< an event descriptor, owned
    std::thread m_thread;
};

} // namespace zivra::desktop
