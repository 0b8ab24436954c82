#pragma once

#include <QByteArray>
#include <QFuture>
#include <QString>

namespace zivra {

/// What a vault answers when asked for a secret. A vault that can't be asked (it is locked, missing, or
/// refuses) is not one that holds nothing: its secret may come back.
struct SecretAnswer {
    enum class Outcome { Found, None, Unavailable };

    Outcome outcome = Outcome::Unavailable;
    QByteArray value; ///< of a secret that was found; what we have written is UTF-8

    friend bool operator==(const SecretAnswer &, const SecretAnswer &) = default;
};

/// The user's vault of secrets, each named by the service that it is for and an account there. Main thread
/// only; never waits for the vault. Operations take effect in the order of the calls. No future carries an
/// exception, and nothing is ever stored outside of the vault.
class SecretStore {
public:
    virtual ~SecretStore() = default;

    /// The vault may ask the user to unlock it first, which takes as long as the user does.
    [[nodiscard]] virtual QFuture<SecretAnswer> read(const QString &service, const QString &account) = 0;
    /// The value is UTF-8 and takes the place of an earlier one. Whether the vault has stored it.
    virtual QFuture<bool> write(const QString &service, const QString &account, const QByteArray &value) = 0;
    /// Whether the vault holds nothing there any more.
    virtual QFuture<bool> remove(const QString &service, const QString &account) = 0;
};

} // namespace zivra
