#include "desktop/x11/X11ContentQuery.h"

#include "../../support/PrintQt.h"
#include "Eventually.h"
#include "TestClient.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>

namespace zivra::desktop {
namespace {

class X11ContentQueryTest : public ::testing::Test {
protected:
    [[nodiscard]] std::vector<ShareableWindow> windows(bool excludingDesktop, bool onScreenOnly)
    {
        return query.shareableContent(excludingDesktop, onScreenOnly).result().windows;
    }
    [[nodiscard]] std::optional<ShareableWindow> find(xcb_window_t window, bool onScreenOnly = false)
    {
        const auto all = windows(false, onScreenOnly);
        const auto found = std::ranges::find(all, window, &ShareableWindow::windowID);
        return found != all.end() ? std::optional(*found) : std::nullopt;
    }
    [[nodiscard]] bool isManaged(xcb_window_t window)
    {
        const auto found = find(window);
        return found && found->isOnScreen && found->frame.height() > 200; // it has got its title bar
    }
    [[nodiscard]] bool isAbove(xcb_window_t upper, xcb_window_t lower)
    {
        const auto all = windows(false, true);
        const auto place = [&](xcb_window_t window) {
            return std::ranges::find(all, window, &ShareableWindow::windowID);
        };
        return place(upper) < place(lower) && place(lower) != all.end();
    }

    TestClient client;
    X11ContentQuery query;
};

TEST_F(X11ContentQueryTest, DescribesAnOrdinaryWindowByItsApplicationsOwnNumber)
{
    const auto window = client.showWindow({.title = "Grüße ✓"});
    ASSERT_TRUE(eventually([&] { return isManaged(window); }));
    auto found = *find(window);
    EXPECT_EQ(found.title, QStringLiteral("Grüße ✓"));
    EXPECT_EQ(found.layer, 0);
    ASSERT_TRUE(found.owningApplication);
    EXPECT_EQ(found.owningApplication->processID, getpid());
    EXPECT_EQ(found.owningApplication->name, "Test Application");

    const auto &server = client.connection();
    const auto origin = server.reply(xcb_translate_coordinates_reply,
                                     xcb_translate_coordinates(server.get(), window, server.root(), 0, 0));
    const QRectF inner(origin->dst_x, origin->dst_y, 300, 200);
    EXPECT_TRUE(found.frame.contains(inner));
    EXPECT_LT(found.frame.top(), inner.top()) << "the title bar belongs to it";
    EXPECT_LT(found.frame.height(), 260);

    xcb_delete_property(server.get(), window, server.atom("_NET_WM_NAME"));
    client.setText(window, "WM_NAME", "STRING", "Caf\xE9");
    EXPECT_TRUE(eventually([&] { return find(window)->title == QStringLiteral("Café"); }));

    // A toolkit that draws its own shadow: what lies outside of the visible window does not count.
    constexpr std::array<std::uint32_t, 4> kShadow{10, 20, 30, 40};
    xcb_change_property(server.get(), XCB_PROP_MODE_REPLACE, window, server.atom("_GTK_FRAME_EXTENTS"),
                        XCB_ATOM_CARDINAL, 32, kShadow.size(), kShadow.data());
    server.flush();
    EXPECT_TRUE(eventually([&] { return find(window)->frame == inner.adjusted(10, 30, -20, -40); }));
}

TEST_F(X11ContentQueryTest, ListsFromTheTopmostToTheLowest)
{
    const auto first = client.showWindow({});
    ASSERT_TRUE(eventually([&] { return isManaged(first); }));
    const auto second = client.showWindow({});
    ASSERT_TRUE(eventually([&] { return isManaged(second); }));
    client.raise(first);
    EXPECT_TRUE(eventually([&] { return isAbove(first, second); }));
    client.raise(second);
    EXPECT_TRUE(eventually([&] { return isAbove(second, first); }));
}

TEST_F(X11ContentQueryTest, KnowsWhatIsNotOnScreen)
{
    constexpr std::uint32_t kIconic = 3;
    constexpr std::uint32_t kEveryWorkspace = 0xFFFFFFFF;
    const auto window = client.showWindow({});
    ASSERT_TRUE(eventually([&] { return isManaged(window); }));
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

    client.unmap(window);
    EXPECT_TRUE(eventually([&] { return !find(window); })) << "withdrawn";
}

TEST_F(X11ContentQueryTest, SortsTheKindsOfWindowsIntoLayers)
{
    const auto popup = client.showWindow({.overridesRedirect = true});
    const auto dock = client.showWindow({.type = "DOCK"});
    const auto notification = client.showWindow({.type = "NOTIFICATION"});
    const auto wallpaper = client.showWindow({.type = "DESKTOP"});
    const auto invisible = client.showWindow({.overridesRedirect = true, .isInputOnly = true});
    const auto neverShown = client.makeWindow({});
    const auto isListed = [&](xcb_window_t window) { return find(window, true).has_value(); };
    ASSERT_TRUE(eventually([&] { return isListed(dock) && isListed(notification) && isListed(wallpaper); }));

    EXPECT_GT(find(popup)->layer, 0);
    EXPECT_EQ(find(popup)->frame, QRectF(200, 150, 300, 200));
    EXPECT_GT(find(dock)->layer, 0);
    EXPECT_GT(find(notification)->layer, 0);
    EXPECT_LT(find(wallpaper)->layer, 0);
    EXPECT_FALSE(find(invisible));
    EXPECT_FALSE(find(neverShown));
    for (const auto &window : windows(true, false)) {
        EXPECT_NE(window.windowID, wallpaper);
    }
}

/// Another process with a window of its own.
class OtherApplication {
public:
    OtherApplication() : m_process(fork())
    {
        if (m_process == 0) {
            const TestClient client;
            const auto window = client.showWindow({});
            while (client.connection().isAlive() && window != XCB_WINDOW_NONE) {
                pause();
            }
            _exit(0);
        }
    }
    ~OtherApplication()
    {
        kill(m_process, SIGKILL);
        waitpid(m_process, nullptr, 0);
    }
    OtherApplication(const OtherApplication &) = delete;
    OtherApplication &operator=(const OtherApplication &) = delete;
    [[nodiscard]] pid_t processID() const { return m_process; }

private:
    pid_t m_process;
};

TEST_F(X11ContentQueryTest, BringsAnApplicationForward)
{
    const auto ours = client.showWindow({});
    ASSERT_TRUE(eventually([&] { return isManaged(ours); }));
    const OtherApplication other;
    const auto theirs = [&] {
        const auto all = windows(true, true);
        const auto found = std::ranges::find_if(all, [&](const ShareableWindow &window) {
            return window.owningApplication && window.owningApplication->processID == other.processID();
        });
        return found != all.end() ? found->windowID : 0;
    };
    ASSERT_TRUE(eventually([&] { return isManaged(theirs()); }));

    query.activateApplication(getpid());
    EXPECT_TRUE(eventually([&] { return isAbove(ours, theirs()); }));
    query.activateApplication(other.processID());
    EXPECT_TRUE(eventually([&] { return isAbove(theirs(), ours); }));
    query.activateApplication(1); // has no window
    EXPECT_TRUE(isAbove(theirs(), ours));
}

} // namespace
} // namespace zivra::desktop
