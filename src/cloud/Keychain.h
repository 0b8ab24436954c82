#pragma once

#include "platform/SecretStore.h"

#include <QCoroTask>
#include <QString>

#include <optional>

namespace zivra {

/// Our secrets in the user's vault, each under a name of its own. Main thread only; operations take effect
/// in the order of the calls.
class Keychain {
public:
    struct Answer {
        bool available = false;       ///< the vault could be asked
        std::optional<QString> value; ///< absent when there is none, or none that is text
    };

    /// The store outlives the keychain and its tasks.
    explicit Keychain(SecretStore &store) : m_store(store) {}

    QCoro::Task<Answer> read(QString account);
    /// Puts a new secret in place of an earlier one. A vault that refuses is not noticed.
    void write(const QString &value, const QString &account);
    void remove(const QString &account);

private:
    SecretStore &m_store;
};

} // namespace zivra
