#pragma once

#include <QColor>
#include <QRect>

#include <optional>

namespace zivra::desktop {

/// A colour in which a tray icon can be read, by what the desktop tells of its panel: nothing in X11 or
/// D-Bus names the panel's colour.
[[nodiscard]] QColor presumedTrayTint();

/// The same by what is on the screen around the icon, whose frame is given in points; nothing where the
/// screen can't be read there.
[[nodiscard]] std::optional<QColor> trayTintOver(const QRect &iconFrame);

} // namespace zivra::desktop
