#include "Eventually.h"
#include "TestClient.h"
#include "desktop/x11/X11ContentQuery.h"
#include "desktop/x11/X11HotKeys.h"
#include "desktop/x11/X11Screens.h"
#include "platform/PlatformError.h"

#include <QProcess>

#include <gtest/gtest.h>

namespace zivra::desktop {
namespace {

/// An X server without a window manager, which a test may take away.
class LoneServer {
public:
    LoneServer()
    {
        m_server.start("Xvfb", {"-displayfd", "1", "-screen", "0", "640x480x24", "-nolisten", "tcp"});
        m_server.waitForReadyRead(10'000);
        m_display = ':' + m_server.readLine().trimmed();
    }
    ~LoneServer() { end(); }
    LoneServer(const LoneServer &) = delete;
    LoneServer &operator=(const LoneServer &) = delete;

    [[nodiscard]] const QByteArray &display() const { return m_display; }
    void end()
    {
        m_server.kill();
        m_server.waitForFinished();
    }

private:
    QProcess m_server;
    QByteArray m_display;
};

TEST(LostServer, IsReportedInWordsAndNeverEndsTheProgram)
{
    LoneServer server;
    X11ContentQuery query(server.display());
    const X11Screens screens(server.display());
    X11HotKeys hotKeys(server.display());
    EXPECT_EQ(screens.screens().size(), 1);
    const auto reference = hotKeys.registerHotKey(0x0F, 0x1000, 1);
    ASSERT_TRUE(reference);

    server.end();
    EXPECT_TRUE(eventually([&] { return screens.screens().empty(); }));
    EXPECT_EQ(screens.mouseLocation(), QPointF());
    EXPECT_THROW(static_cast<void>(query.shareableContent(true, true).result()), PlatformError);
    query.activateApplication(getpid());
    passTime(std::chrono::milliseconds(50));
    hotKeys.unregisterHotKey(*reference);
    EXPECT_FALSE(hotKeys.registerHotKey(0x0F, 0x1000, 1));
    EXPECT_THROW(X11Screens{server.display()}, PlatformError);
}

TEST(ServerWithoutWindowManager, ListsAndRaisesPlainWindows)
{
    const LoneServer server;
    const TestClient client(server.display());
    X11ContentQuery query(server.display());
    const auto lower = client.showWindow({});
    const auto upper = client.showWindow({});
    const auto topmost = [&] {
        const auto content = query.shareableContent(true, true).result();
        return content.windows.empty() ? 0 : content.windows.front().windowID;
    };
    EXPECT_TRUE(eventually([&] { return topmost() == upper; }));
    client.unmap(upper);
    EXPECT_TRUE(eventually([&] { return topmost() == lower; }));
    client.map(upper);
    client.raise(lower);
    const auto popup = client.showWindow({.overridesRedirect = true});
    EXPECT_TRUE(eventually([&] { return topmost() == popup; }));
    query.activateApplication(getpid());
    EXPECT_TRUE(eventually([&] { return topmost() == lower; })) << "pop-ups are not brought forward";
}

} // namespace
} // namespace zivra::desktop
