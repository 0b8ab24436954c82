#pragma once

#include "platform/Screens.h"

#include <QCoroTask>
#include <QRectF>

#include <optional>

namespace zivra {

/// Lets the user choose a rectangle of a screen. Main thread only.
class AreaSelector {
public:
    virtual ~AreaSelector() = default;

    /// The rectangle in whole points, origin at the top left of that screen; absent when the user
    /// called it off.
    [[nodiscard]] virtual QCoro::Task<std::optional<QRectF>> select(Screen screen) = 0;
};

} // namespace zivra
