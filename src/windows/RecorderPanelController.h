#pragma once

#include "platform/MediaTime.h"

#include <QRectF>

#include <functional>
#include <optional>

namespace zivra {

/// The floating panel in which the user sets up a recording. Main thread only.
class RecorderPanelController {
public:
    virtual ~RecorderPanelController() = default;

    /// Below the status item's frame (points), or at a place of its own when that is not known.
    virtual void show(const std::optional<QRectF> &below) = 0;
    virtual void hide() = 0;
    [[nodiscard]] virtual bool isVisible() const = 0;
    /// When it was last hidden, on the `MediaClock`; invalid when it never was.
    [[nodiscard]] virtual MediaTime hiddenAt() const = 0;

    /// Told true when the panel appears and false when it goes. Set by the owner.
    std::function<void(bool)> onVisibilityChange;
};

} // namespace zivra
