#include "desktop/session/UserMediaAuthorization.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace zivra::desktop {

namespace {

TEST(UserMediaAuthorizationTest, deniesOnlyWhatThisUserMayNotOpen)
{
    const QTemporaryDir devices;
    QStringList allowed;
    bool hasServer = false;
    const UserMediaAuthorization authorization(
        {.deviceFolder = devices.path(),
         .mayOpen = [&](const QString &path) { return allowed.contains(path); },
         .hasSoundServer = [&] { return hasServer; }});
    const auto addDevice = [&](const QString &name) {
        EXPECT_TRUE(QFile(devices.filePath(name)).open(QIODevice::WriteOnly));
    };
    const auto expectDenied = [&](bool isDenied) {
        for (const auto type : {MediaType::Video, MediaType::Audio}) {
            EXPECT_EQ(authorization.authorizationStatus(type) == AuthorizationStatus::Denied, isDenied);
        }
    };
    ASSERT_TRUE(QDir(devices.path()).mkdir("snd"));
    addDevice("snd/pcmC0D0p");
    expectDenied(false);
    addDevice("video0");
    addDevice("video1");
    addDevice("snd/pcmC0D0c");
    expectDenied(true);
    allowed = {devices.filePath("video1")};
    hasServer = true;
    expectDenied(false);
}

} // namespace

} // namespace zivra::desktop
