#pragma once

#include "platform/UserDefaults.h"

#include <QStringList>

#include <map>

namespace zivra::test {

class FakeUserDefaults final : public UserDefaults {
public:
    std::map<QString, QJsonValue> values;
    QStringList written; ///< keys, one entry a write or removal

    [[nodiscard]] QJsonValue value(const QString &key) const override
    {
        const auto found = values.find(key);
        return found != values.end() ? found->second : QJsonValue(QJsonValue::Undefined);
    }
    void setValue(const QString &key, const QJsonValue &value) override
    {
        values[key] = value;
        written << key;
    }
    void removeValue(const QString &key) override
    {
        values.erase(key);
        written << key;
    }
};

} // namespace zivra::test
