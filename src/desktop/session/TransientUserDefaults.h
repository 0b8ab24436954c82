#pragma once

#include "platform/UserDefaults.h"

#include <QHash>

namespace zivra::desktop {

/// User defaults that read through to other ones and keep every change to themselves, for a run of the
/// program that must leave no trace in the user's preferences. The other ones outlive this.
class TransientUserDefaults final : public UserDefaults {
public:
    explicit TransientUserDefaults(const UserDefaults &base) : m_base(base) {}

    [[nodiscard]] QJsonValue value(const QString &key) const override
    {
        const auto change = m_changes.constFind(key);
        return change == m_changes.cend() ? m_base.value(key) : *change;
    }

    void setValue(const QString &key, const QJsonValue &value) override { m_changes.insert(key, value); }

    void removeValue(const QString &key) override
    {
        m_changes.insert(key, QJsonValue(QJsonValue::Undefined));
    }

private:
    const UserDefaults &m_base;
    QHash<QString, QJsonValue> m_changes; ///< a removed key is undefined
};

} // namespace zivra::desktop
