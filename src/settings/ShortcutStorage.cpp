#include "settings/ShortcutStorage.h"

#include <limits>

namespace zivra {

namespace {

std::optional<std::uint32_t> decodedNumber(const QJsonValue &stored)
{
    constexpr qint64 kNotWhole = -1;
    const qint64 number = stored.toInteger(kNotWhole);
    if (number < 0 || number > std::numeric_limits<std::uint32_t>::max()) {
        return std::nullopt;
    }
    return static_cast<std::uint32_t>(number);
}

std::optional<Shortcut> decodedShortcut(const QJsonValue &stored)
{
    const auto keyCode = decodedNumber(stored[QLatin1String("keyCode")]);
    const auto modifiers = decodedNumber(stored[QLatin1String("modifiers")]);
    const QJsonValue key = stored[QLatin1String("key")];
    if (!keyCode || !modifiers || !key.isString()) {
        return std::nullopt;
    }
    return Shortcut(*keyCode, *modifiers, key.toString());
}

} // namespace

QJsonObject encodedShortcuts(const ShortcutOverrides &overrides)
{
    QJsonObject encoded;
    for (const auto &[action, shortcut] : overrides) {
        if (shortcut) {
            encoded[action] = QJsonObject{{QStringLiteral("keyCode"), qint64{shortcut->keyCode}},
                                          {QStringLiteral("modifiers"), qint64{shortcut->modifiers}},
                                          {QStringLiteral("key"), shortcut->key}};
        } else {
            encoded[action] = QJsonValue::Null;
        }
    }
    return encoded;
}

ShortcutOverrides decodedShortcuts(const QJsonValue &stored)
{
    ShortcutOverrides overrides;
    const QJsonObject object = stored.toObject();
    for (auto entry = object.begin(); entry != object.end(); ++entry) {
        const QJsonValue value = entry.value();
        const auto shortcut = decodedShortcut(value);
        if (!shortcut && !value.isNull()) {
            return {};
        }
        overrides[entry.key()] = shortcut;
    }
    return overrides;
}

} // namespace zivra
