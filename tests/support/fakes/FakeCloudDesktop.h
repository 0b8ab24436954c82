#pragma once

#include "platform/NotificationCenter.h"
#include "platform/SecretStore.h"
#include "support/fakes/ScriptedResult.h"

#include <map>
#include <optional>
#include <vector>

namespace zivra::test {

/// A vault with one secret at most.
class FakeSecretStore final : public SecretStore {
public:
    std::optional<QByteArray> secret;
    bool available = true;
    ScriptedResult<SecretAnswer> reading;

    QFuture<SecretAnswer> read(const QString &, const QString &) override
    {
        using Outcome = SecretAnswer::Outcome;
        const SecretAnswer answer{secret ? Outcome::Found : Outcome::None, secret.value_or(QByteArray())};
        return reading.answer(available ? answer : SecretAnswer());
    }
    QFuture<bool> write(const QString &, const QString &, const QByteArray &value) override
    {
        return change(value);
    }
    QFuture<bool> remove(const QString &, const QString &) override { return change(std::nullopt); }

private:
    QFuture<bool> change(const std::optional<QByteArray> &value)
    {
        if (available) {
            secret = value;
        }
        return QtFuture::makeReadyFuture(available);
    }
};

class FakeNotificationCenter final : public NotificationCenter {
public:
    std::vector<Notification> shown;
    std::function<void(const QUrl &)> click;

    void requestAuthorization() override {}
    void show(const Notification &notification) override { shown.push_back(notification); }
    void setActivationHandler(std::function<void(const QUrl &)> handler) override { click = handler; }
};

} // namespace zivra::test
