#include "desktop/secrets/KeychainSecretStore.h"

#include "support/Eventually.h"
#include "support/Shell.h"

#include <QElapsedTimer>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace zivra::desktop {

namespace {

using Outcome = SecretAnswer::Outcome;

const QString service = "io.quillbeck.zivra";

/// What the vault answers; meanwhile the thread of the caller goes on turning.
template <typename Answer>
Answer settled(const QFuture<Answer> &future)
{
    QElapsedTimer pause;
    pause.start();
    qint64 longest = 0; // milliseconds
    EXPECT_TRUE(eventually([&] {
        longest = std::max(longest, pause.restart());
        return future.isFinished();
    }));
    EXPECT_LT(longest, 100);
    return future.isFinished() ? future.result() : Answer{};
}

} // namespace

TEST(KeychainSecretStore, TellsAVaultThatCantBeAskedFromOneThatHoldsNothing)
{
    const QTemporaryDir home;
    KeychainSecretStore store;
    const auto read = [&] { return settled(store.read(service, "cloud-token")); };

    // No vault in the session.
    EXPECT_EQ(read(), SecretAnswer());
    EXPECT_FALSE(settled(store.write(service, "cloud-token", "lost")));

    // One that is open; calls take effect in their order.
    shell(QString("printf pw | XDG_DATA_HOME=%1 XDG_RUNTIME_DIR=%1 gnome-keyring-daemon --unlock --daemonize "
                  "--components=secrets --control-directory=%1")
              .arg(home.path()));
    ASSERT_TRUE(eventually([&] { return read() == SecretAnswer{Outcome::None, {}}; }));
    const QByteArray token = "1|\xc3\xa9 & \"token\"";
    store.write(service, "cloud-token", "older");
    const auto removed = store.remove(service, "cloud-token");
    const auto gone = store.read(service, "cloud-token");
    const auto written = store.write(service, "cloud-token", token);
    const auto found = store.read(service, "cloud-token");
    EXPECT_TRUE(settled(written) && removed.result());
    EXPECT_EQ(gone.result(), (SecretAnswer{Outcome::None, {}}));
    EXPECT_EQ(settled(found), (SecretAnswer{Outcome::Found, token}));
    EXPECT_EQ(settled(store.read(service, "another")), (SecretAnswer{Outcome::None, {}}));

    // One that is locked, with nobody to unlock it: what it holds is not gone.
    shell("dbus-send --session --print-reply --dest=org.freedesktop.secrets /org/freedesktop/secrets "
          "org.freedesktop.Secret.Service.Lock array:objpath:/org/freedesktop/secrets/collection/login");
    EXPECT_EQ(read(), SecretAnswer());
    EXPECT_FALSE(settled(store.write(service, "cloud-token", "newer")));
    EXPECT_FALSE(settled(store.remove(service, "cloud-token")));
}

} // namespace zivra::desktop
