#pragma once

#include <QLatin1String>
#include <QString>

#include <array>
#include <cstdint>
#include <utility>

namespace zivra {

/// A key-down event as the desktop tells it.
struct KeyPress {
    std::uint32_t keyCode = 0; ///< in the numbering of `HotKeyService`
    bool control = false;
    bool option = false;
    bool shift = false;
    bool command = false;
    QString charactersIgnoringModifiers; ///< empty when the key has none
};

/// A key combination. The numbers are those of `HotKeyService`.
struct Shortcut {
    static constexpr std::uint32_t kControl = 0x1000;
    static constexpr std::uint32_t kOption = 0x0800;
    static constexpr std::uint32_t kShift = 0x0200;
    static constexpr std::uint32_t kCommand = 0x0100;

    Shortcut() = default;
    Shortcut(std::uint32_t code, std::uint32_t modifierBits, QString keyLabel)
        : keyCode(code),
          modifiers(modifierBits),
          key(std::move(keyLabel))
    {
    }
    explicit Shortcut(const KeyPress &press);

    /// The glyphs of its modifiers, in one fixed order, then `key`.
    [[nodiscard]] QString display() const;
    /// What stands on the key: a name of our own for keys without a letter, else the characters in upper
    /// case, and "?" for a key that has none.
    [[nodiscard]] static QString keyName(std::uint32_t keyCode, const QString &charactersIgnoringModifiers);

    friend bool operator==(const Shortcut &, const Shortcut &) = default;

    std::uint32_t keyCode = 0;
    std::uint32_t modifiers = 0;
    QString key; ///< for display
};

/// What a global hot key can do.
enum class ShortcutAction { StartStop, PauseResume, Restart, Cancel };

inline constexpr std::array kAllShortcutActions = {ShortcutAction::StartStop, ShortcutAction::PauseResume,
                                                   ShortcutAction::Restart, ShortcutAction::Cancel};

/// The name of the action in the stored preferences.
[[nodiscard]] QLatin1String rawValue(ShortcutAction action);
/// The combination of an action that the user has not changed.
[[nodiscard]] Shortcut defaultShortcut(ShortcutAction action);

} // namespace zivra
