#include "settings/Shortcut.h"

#include <algorithm>
#include <utility>

namespace zivra {

namespace {

struct NamedKey {
    std::uint32_t keyCode;
    const char16_t *name;
};

// Key codes: HIToolbox, Events.h.
constexpr std::array kNamedKeys = {
    NamedKey{49, u"Space"}, NamedKey{36, u"↩"},    NamedKey{48, u"⇥"},    NamedKey{123, u"←"},
    NamedKey{124, u"→"},    NamedKey{125, u"↓"},   NamedKey{126, u"↑"},   NamedKey{122, u"F1"},
    NamedKey{120, u"F2"},   NamedKey{99, u"F3"},   NamedKey{118, u"F4"},  NamedKey{96, u"F5"},
    NamedKey{97, u"F6"},    NamedKey{98, u"F7"},   NamedKey{100, u"F8"},  NamedKey{101, u"F9"},
    NamedKey{109, u"F10"},  NamedKey{103, u"F11"}, NamedKey{111, u"F12"},
};

struct ModifierGlyph {
    std::uint32_t bit;
    char16_t glyph;
};

constexpr std::array kModifierGlyphs = {
    ModifierGlyph{Shortcut::kControl, u'⌃'},
    ModifierGlyph{Shortcut::kOption, u'⌥'},
    ModifierGlyph{Shortcut::kShift, u'⇧'},
    ModifierGlyph{Shortcut::kCommand, u'⌘'},
};

constexpr std::uint32_t kDefaultModifiers = Shortcut::kOption | Shortcut::kShift;

} // namespace

Shortcut::Shortcut(const KeyPress &press)
    : keyCode(press.keyCode),
      modifiers((press.control ? kControl : 0) | (press.option ? kOption : 0) | (press.shift ? kShift : 0) |
                (press.command ? kCommand : 0)),
      key(keyName(press.keyCode, press.charactersIgnoringModifiers))
{
}

QString Shortcut::display() const
{
    QString text;
    for (const ModifierGlyph &modifier : kModifierGlyphs) {
        if ((modifiers & modifier.bit) != 0) {
            text += QChar(modifier.glyph);
        }
    }
    return text + key;
}

QString Shortcut::keyName(std::uint32_t keyCode, const QString &charactersIgnoringModifiers)
{
    const auto *const named = std::ranges::find(kNamedKeys, keyCode, &NamedKey::keyCode);
    if (named != kNamedKeys.end()) {
        return QString::fromUtf16(named->name);
    }
    return charactersIgnoringModifiers.isEmpty() ? QStringLiteral("?")
                                                 : charactersIgnoringModifiers.toUpper();
}

QLatin1String rawValue(ShortcutAction action)
{
    switch (action) {
    case ShortcutAction::StartStop:
        return QLatin1String("startStop");
    case ShortcutAction::PauseResume:
        return QLatin1String("pauseResume");
    case ShortcutAction::Restart:
        return QLatin1String("restart");
    case ShortcutAction::Cancel:
        return QLatin1String("cancel");
    }
    Q_UNREACHABLE();
}

Shortcut defaultShortcut(ShortcutAction action)
{
    switch (action) {
    case ShortcutAction::StartStop:
        return {37, kDefaultModifiers, QStringLiteral("L")};
    case ShortcutAction::PauseResume:
        return {35, kDefaultModifiers, QStringLiteral("P")};
    case ShortcutAction::Restart:
        return {15, kDefaultModifiers, QStringLiteral("R")};
    case ShortcutAction::Cancel:
        return {8, kDefaultModifiers, QStringLiteral("C")};
    }
    Q_UNREACHABLE();
}

} // namespace zivra
