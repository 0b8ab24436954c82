#pragma once

#include <QList>
#include <QStringList>

namespace zivra::desktop {

/// The commands that open the settings page for "Privacy_ScreenCapture", "Privacy_Camera" or
/// "Privacy_Microphone", best first; any of them may not be installed. Each is a program's name and its
/// arguments. `desktops` is what XDG_CURRENT_DESKTOP lists. None for an unknown pane.
[[nodiscard]] QList<QStringList> privacySettingsCommands(const QString &pane, const QStringList &desktops);

} // namespace zivra::desktop
