#pragma once

#include "platform/StatusItem.h"

#include <QColor>
#include <QIcon>

#include <functional>

namespace zivra::desktop {

/// The icon for a glyph, drawn afresh at whatever size a tray asks for. The recording glyph has colours of
/// its own; the idle one is drawn in `tint`. `painted` is called each time a tray draws the icon itself.
[[nodiscard]] QIcon trayIcon(StatusGlyph glyph, const QColor &tint, std::function<void()> painted = {});

} // namespace zivra::desktop
