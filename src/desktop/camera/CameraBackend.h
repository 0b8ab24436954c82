#pragma once

#include "platform/CaptureDevices.h"
#include "platform/CaptureSources.h"

#include <functional>
#include <memory>
#include <vector>

namespace zivra::desktop {

/// One kind of cameras. Their identifiers differ from those of every other kind.
class CameraBackend {
public:
    virtual ~CameraBackend() = default;

    /// Main thread; may wait for half a second the first time.
    [[nodiscard]] virtual std::vector<CaptureDevice> cameras() const = 0;
    /// Main thread. Called there after every change; replaces the handler set before.
    virtual void setChangeHandler(std::function<void()> handler) = 0;
    /// Any thread. See `CameraSourceFactory`; null when it is none of its cameras.
    [[nodiscard]] virtual std::unique_ptr<CaptureSource> makeSource(const QString &deviceID, QSize size) = 0;
};

} // namespace zivra::desktop
