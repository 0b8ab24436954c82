#pragma once

#include <QString>

#include <array>
#include <optional>

namespace zivra {

/// The tabs of the settings window, in their order.
enum class SettingsPane { General, Recording, Camera, Shortcuts, Cloud, Permissions };

/// The names of the panes, in the order of the enumeration; they are also path words of our URLs.
inline constexpr std::array kSettingsPaneNames{"general",   "recording", "camera",
                                               "shortcuts", "cloud",     "permissions"};

/// Absent for a word that names no pane.
inline std::optional<SettingsPane> settingsPaneNamed(const QString &name)
{
    for (std::size_t index = 0; index < kSettingsPaneNames.size(); ++index) {
        if (name == QLatin1String(kSettingsPaneNames.at(index))) {
            return static_cast<SettingsPane>(index);
        }
    }
    return std::nullopt;
}

/// The settings window. Main thread only.
class SettingsWindowController {
public:
    virtual ~SettingsWindowController() = default;

    /// Opens it in front with the keyboard, on that pane, or on the one last shown.
    virtual void show(std::optional<SettingsPane> pane) = 0;
};

} // namespace zivra
