#pragma once

#include "platform/SecretStore.h"

#include <QObject>
#include <QThread>

#include <functional>

namespace zivra::desktop {

/// The desktop's own vault, by QtKeychain: the Secret Service of the session bus (freedesktop.org, "Secret
/// Service API"), or the wallet of a KDE session.
///
/// Finding the vault can block, so a thread of its own talks to it. A vault that is locked reports its
/// secrets as missing once the user declines to unlock it: what it says is held against the items that it
/// lists as locked. A vault that is started anew during a run counts as unavailable from then on. At its end,
/// whatever is still asked of the vault is answered as unavailable.
class KeychainSecretStore final : public SecretStore {
public:
    KeychainSecretStore();
    ~KeychainSecretStore() override;
    Q_DISABLE_COPY_MOVE(KeychainSecretStore)

    QFuture<SecretAnswer> read(const QString &service, const QString &account) override;
    QFuture<bool> write(const QString &service, const QString &account, const QByteArray &value) override;
    QFuture<bool> remove(const QString &service, const QString &account) override;

private:
    void inThread(std::function<void()> work);

    QThread m_thread;
    QObject m_jobs; ///< lives in the thread and owns the jobs there
};

} // namespace zivra::desktop
