#include "desktop/camera/CameraList.h"

#include <chrono>
#include <utility>

namespace zivra::desktop {

std::vector<CaptureDevice> CameraList::all() const
{
    constexpr auto kLongestWait = std::chrono::milliseconds(500);
    std::unique_lock lock(m_mutex);
    if (std::exchange(m_mayWait, false)) {
        m_found.wait_for(lock, kLongestWait, [this] { return m_cameras.has_value(); });
    }
    return m_cameras.value_or(std::vector<CaptureDevice>());
}

void CameraList::replace(std::vector<CaptureDevice> cameras)
{
    {
        const std::lock_guard lock(m_mutex);
        if (m_cameras == cameras) {
            return;
        }
        m_cameras = std::move(cameras);
    }
    m_found.notify_all();
    QMetaObject::invokeMethod(
        &m_mainThread,
        [this] {
            if (m_onChange) {
                m_onChange();
            }
        },
        Qt::QueuedConnection);
}

} // namespace zivra::desktop
