#pragma once

#include <QJsonValue>
#include <QString>

namespace zivra {

/// The user's stored preferences: one typed value under each key. Main thread only.
///
/// A missing key reads as undefined, which differs from a stored false, zero or empty string. Data is
/// stored as a JSON object where its format is JSON; dates are ISO 8601 strings in UTC. Writing and
/// removing take effect at once for every later read; nothing reports a failure to store.
class UserDefaults {
public:
    virtual ~UserDefaults() = default;

    [[nodiscard]] virtual QJsonValue value(const QString &key) const = 0;
    virtual void setValue(const QString &key, const QJsonValue &value) = 0;
    virtual void removeValue(const QString &key) = 0;
};

} // namespace zivra
