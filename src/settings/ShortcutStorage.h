#pragma once

#include "settings/Shortcut.h"

#include <QJsonObject>
#include <QJsonValue>
#include <QString>

#include <map>
#include <optional>

namespace zivra {

/// What the user has changed of the shortcuts, by action name. A present key with an absent shortcut is
/// an action that the user has cleared; a missing key is one on its default.
using ShortcutOverrides = std::map<QString, std::optional<Shortcut>>;

/// One member an action: an object with "keyCode", "modifiers" and "key", or null.
[[nodiscard]] QJsonObject encodedShortcuts(const ShortcutOverrides &overrides);
/// One bad entry loses all of them: the result is then empty.
[[nodiscard]] ShortcutOverrides decodedShortcuts(const QJsonValue &stored);

} // namespace zivra
