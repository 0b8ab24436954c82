#include "TestClient.h"
#include "desktop/x11/X11ContentQuery.h"
#include "desktop/x11/X11HotKeys.h"
#include "desktop/x11/X11Screens.h"
#include "platform/PlatformError.h"
#include "support/Eventually.h"

#include <QProcess>

#include <gtest/gtest.h>

namespace zivra::desktop {
namespace {

/// On an X server without a window manager, which the test takes away.
TEST(LoneServer, IsReadWithoutAManagerAndItsLossIsReportedInWords)
{
    QProcess server;
    server.start("Xvfb", {"-displayfd", "1", "-nolisten", "tcp"});
    server.waitForReadyRead(10'000);
    const QByteArray display = ':' + server.readLine().trimmed();
    const TestClient client(display);
    X11ContentQuery query(display);
    const X11Screens screens(display);
    X11HotKeys hotKeys(display);
    const auto topmost = [&] { return query.shareableContent(true, true).result().windows.front().windowID; };
    const auto window = client.showWindow();
    const auto popup = client.showWindow({.overridesRedirect = true});
    EXPECT_EQ(topmost(), popup);
    query.activateApplication(getpid());
    EXPECT_TRUE(eventually([&] { return topmost() == window; })) << "pop-ups are not brought forward";
    EXPECT_EQ(screens.screens().size(), 1);
    const auto reference = hotKeys.registerHotKey(0x0F, 0x1000, 1);
    ASSERT_TRUE(reference);

    server.kill();
    server.waitForFinished();
    EXPECT_TRUE(eventually([&] { return screens.screens().empty(); }));
    EXPECT_THROW(static_cast<void>(query.shareableContent(true, true).result()), PlatformError);
    query.activateApplication(getpid());
    hotKeys.unregisterHotKey(*reference);
    EXPECT_FALSE(hotKeys.registerHotKey(0x0F, 0x1000, 1));
    EXPECT_THROW(X11Screens{display}, PlatformError);
}

} // namespace
} // namespace zivra::desktop
