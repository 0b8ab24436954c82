#pragma once

#include "platform/CaptureDevices.h"

#include <QObject>

#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

namespace zivra::desktop {

/// The cameras that a thread in the background finds, as the main thread asks for them. Made and destroyed on
/// the main thread, when that other thread has ended.
class CameraList {
public:
    /// Main thread. Waits for the first list, for half a second at most and only once.
    [[nodiscard]] std::vector<CaptureDevice> all() const;
    /// Main thread. Called there after every change; replaces the handler set before.
    void setChangeHandler(std::function<void()> handler) { m_onChange = std::move(handler); }

    /// Any thread.
    void replace(std::vector<CaptureDevice> cameras);

private:
    mutable std::mutex m_mutex;
    mutable std::condition_variable m_found;
    std::optional<std::vector<CaptureDevice>> m_cameras; ///< guarded by `m_mutex`
    mutable bool m_mayWait = true;
    std::function<void()> m_onChange;
    QObject m_mainThread; ///< where changes are announced, for as long as this lives
};

} // namespace zivra::desktop
