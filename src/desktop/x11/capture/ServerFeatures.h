#pragma once

#include "desktop/x11/XcbConnection.h"

#include <QString>

namespace zivra::desktop {

/// In words, what an X server lacks of what capture needs; empty when it has all: MIT-SHM, Composite 0.3,
/// Damage, XFixes, RandR 1.5, Render and XInput 2.2. Also tells the server that we use them, as most
/// extensions demand before anything else.
[[nodiscard]] QString missingServerFeatures(const XcbConnection &connection);

} // namespace zivra::desktop
