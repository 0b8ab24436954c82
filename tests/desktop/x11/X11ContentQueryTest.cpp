#include "desktop/x11/X11ContentQuery.h"

#include "TestClient.h"
#include "support/Eventually.h"
#include "support/PrintQt.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

namespace zivra::desktop {
namespace {

class X11ContentQueryTest : public ::testing::Test {
protected:
    [[nodiscard]] std::optional<ShareableWindow> find(xcb_window_t window, bool onScreenOnly = false)
    {
        const auto all = query.shareableContent(false, onScreenOnly).result().windows;
        const auto found = std::ranges::find(all, window, &ShareableWindow::windowID);
        return found != all.end() ? std::optional(*found) : std::nullopt;
    }
    /// On screen, with its title bar.
    [[nodiscard]] bool isManaged(xcb_window_t window)
    {
        const auto found = find(window, true);
        return found && found->frame.height() > 200;
    }
    [[nodiscard]] xcb_window_t showManaged(const TestClient::Look &look = TestClient::Look())
    {
        const auto window = client.showWindow(look);
        EXPECT_TRUE(eventually([&] { return isManaged(window); }));
        return window;
    }

    TestClient client;
    X11ContentQuery query;
};

TEST_F(X11ContentQueryTest, DescribesAnOrdinaryWindowByItsApplicationsOwnNumber)
{
    const auto window = showManaged({.title = "Grüße ✓"});
    const auto found = *find(window);
    EXPECT_EQ(found.title, QStringLiteral("Grüße ✓"));
    EXPECT_EQ(found.layer, 0);
    ASSERT_TRUE(found.owningApplication);
    EXPECT_EQ(found.owningApplication->processID, getpid());
    EXPECT_EQ(found.owningApplication->name, "Test Application");

    const auto origin = client.reply(xcb_translate_coordinates_reply,
                                     xcb_translate_coordinates(client.get(), window, client.root(), 0, 0));
    const QRectF inner(origin->dst_x, origin->dst_y, 300, 200);
    EXPECT_TRUE(found.frame.contains(inner));
    EXPECT_LT(found.frame.top(), inner.top()) << "the title bar belongs to it";
    EXPECT_LT(found.frame.height(), 260);

    client.setText(window, "_NET_WM_NAME", "UTF8_STRING", "");
    client.setText(window, "WM_NAME", "STRING", "Caf\xE9");
    EXPECT_EQ(find(window)->title, QStringLiteral("Café"));
    // A toolkit that draws its own shadow: what lies outside of the visible window does not count.
    client.setNumbers(window, "_GTK_FRAME_EXTENTS", XCB_ATOM_CARDINAL, {10, 20, 30, 40});
    EXPECT_EQ(find(window)->frame, inner.adjusted(10, 30, -20, -40));
}

TEST_F(X11ContentQueryTest, KnowsWhatIsNotOnScreen)
{
    constexpr std::uint32_t kIconic = 3;
    constexpr std::uint32_t kEveryWorkspace = 0xFFFFFFFF;
    const auto window = showManaged();
    const auto isHidden = [&] {
        const auto listed = find(window);
        return listed && !listed->isOnScreen && !find(window, true);
    };
    client.tellManager(window, "WM_CHANGE_STATE", {kIconic});
    EXPECT_TRUE(eventually(isHidden)) << "minimised";
    client.map(window);
    EXPECT_TRUE(eventually([&] { return isManaged(window); }));
    client.tellManager(window, "_NET_WM_DESKTOP", {1, 2});
    EXPECT_TRUE(eventually(isHidden)) << "on another workspace";
    client.tellManager(window, "_NET_WM_DESKTOP", {kEveryWorkspace, 2});
    EXPECT_TRUE(eventually([&] { return isManaged(window); }));
}

TEST_F(X11ContentQueryTest, SortsTheKindsOfWindowsIntoLayers)
{
    const auto popup = client.showWindow({.overridesRedirect = true});
    const auto dock = client.showWindow({.type = "DOCK"});
    const auto notification = client.showWindow({.type = "NOTIFICATION"});
    const auto wallpaper = client.showWindow({.type = "DESKTOP"});
    ASSERT_TRUE(eventually([&] { return find(dock, true) && find(notification, true) && find(wallpaper); }));

    EXPECT_GT(find(popup)->layer, 0);
    EXPECT_EQ(find(popup)->frame, TestClient::kPlace);
    EXPECT_GT(find(dock)->layer, 0);
    EXPECT_GT(find(notification)->layer, 0);
    EXPECT_LT(find(wallpaper)->layer, 0);
    for (const auto &window : query.shareableContent(true, false).result().windows) {
        EXPECT_NE(window.windowID, wallpaper);
    }
}

TEST_F(X11ContentQueryTest, BringsAnApplicationForward)
{
    static_cast<void>(showManaged());
    const pid_t other = fork();
    if (other == 0) { // another application with one window
        const TestClient process;
        while (process.showWindow() != XCB_WINDOW_NONE) {
            pause();
        }
    }
    const auto isOnTop = [&](pid_t process) {
        const auto all = query.shareableContent(true, true).result().windows;
        const auto top = std::ranges::find(all, 0, &ShareableWindow::layer);
        return top != all.end() && top->owningApplication && top->owningApplication->processID == process;
    };
    EXPECT_TRUE(eventually([&] { return isOnTop(other); }));
    query.activateApplication(getpid());
    EXPECT_TRUE(eventually([&] { return isOnTop(getpid()); }));
    query.activateApplication(other);
    EXPECT_TRUE(eventually([&] { return isOnTop(other); }));
    kill(other, SIGKILL);
    waitpid(other, nullptr, 0);
}

} // namespace
} // namespace zivra::desktop
