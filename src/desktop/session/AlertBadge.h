#pragma once

#include "platform/AlertPresenter.h"

#include <QPixmap>

namespace zivra::desktop {

/// The picture beside an alert's message, a square with a side in points: a disc with an "i", or a warning
/// triangle. The desktop's icon theme is not asked, as a bare window manager has none.
[[nodiscard]] QPixmap alertBadge(Alert::Style style, int side, qreal pixelsPerPoint);

} // namespace zivra::desktop
