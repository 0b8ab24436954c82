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
    const auto isDenied = [&](MediaType type) {
        return authorization.authorizationStatus(type) == AuthorizationStatus::Denied;
    };
    ASSERT_TRUE(QDir(devices.path()).mkdir("snd"));
    addDevice("snd/pcmC0D0p");
    EXPECT_FALSE(isDenied(MediaType::Video));
    EXPECT_FALSE(isDenied(MediaType::Audio));

    addDevice("video0");
    addDevice("video1");
    addDevice("snd/pcmC0D0c");
    EXPECT_TRUE(isDenied(MediaType::Video));
    EXPECT_TRUE(isDenied(MediaType::Audio));

    allowed = {devices.filePath("video1")};
    hasServer = true;
    EXPECT_FALSE(isDenied(MediaType::Video));
    EXPECT_FALSE(isDenied(MediaType::Audio));
}

} // namespace

} // namespace zivra::desktop
