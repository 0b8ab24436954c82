#pragma once

#include "platform/MediaSample.h"

#include <QString>

#include <functional>
#include <optional>
#include <vector>

namespace zivra {

/// A camera or a microphone. `uniqueID` stays the same across restarts and replugging.
struct CaptureDevice {
    QString uniqueID;
    QString name; ///< what the user knows it by

    friend bool operator==(const CaptureDevice &, const CaptureDevice &) = default;
};

/// The devices of one kind, now. Main thread only.
class CaptureDeviceCatalog {
public:
    virtual ~CaptureDeviceCatalog() = default;

    [[nodiscard]] virtual std::vector<CaptureDevice> devices(MediaType type) const = 0;
    /// The one that the desktop uses when nobody chooses.
    [[nodiscard]] virtual std::optional<CaptureDevice> defaultDevice(MediaType type) const = 0;
    /// Called on the main thread after every change; replaces the handler set before.
    virtual void setChangeHandler(std::function<void()> handler) = 0;
};

} // namespace zivra
