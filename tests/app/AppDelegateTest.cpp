#include "app/AppDelegate.h"

#include "app/FakeSurfaces.h"
#include "desktop/network/CurlSender.h"
#include "support/fakes/FakeCloudDesktop.h"
#include "support/fakes/FakeHotKeyService.h"

#include <QRegularExpression>
#include <QUrlQuery>

#include <gtest/gtest.h>

namespace zivra::test {

namespace {

struct FakeStatusItem final : StatusItem {
    void setGlyph(StatusGlyph) override {}
    void setToolTip(const QString &) override {}
    void setClickHandler(std::function<void()> handler) override { click = std::move(handler); }
    void setMenuProvider(std::function<std::vector<MenuItem>()> provider) override { menu = provider; }
    std::optional<QRectF> frame() const override { return QRectF(5, 0, 20, 20); }

    std::function<void()> click;
    std::function<std::vector<MenuItem>()> menu;
};

struct FakePasteboard final : Pasteboard, Logging {
    using Logging::Logging;
    void setString(const QString &text) override { log << "copy " + text; }
    void setFile(const QUrl &fileURL) override { log << "copy file " + fileURL.fileName(); }
};

struct FakePanel final : RecorderPanelController {
    explicit FakePanel(MediaClock &mediaClock) : clock(mediaClock) {}
    void show(const std::optional<QRectF> &frame) override { visible = frame == QRectF(5, 0, 20, 20); }
    void hide() override
    {
        visible = false;
        hidden = clock.now();
    }
    bool isVisible() const override { return visible; }
    MediaTime hiddenAt() const override { return hidden; }
    MediaClock &clock;
    bool visible = false;
    MediaTime hidden;
};

struct FakeWindows final : LibraryWindowController, SettingsWindowController, Logging {
    using Logging::Logging;
    void show(const std::optional<QUrl> &focus) override
    {
        log << "library" + (focus ? " " + focus->fileName() : QString());
    }
    void show(std::optional<SettingsPane> pane) override
    {
        log << "settings" + (pane ? QString(" %1").arg(static_cast<int>(*pane)) : QString());
    }
};

struct AppDelegateTest : testing::Test, FakeWorld {
    AppDelegateTest()
    {
        defaults.setValue("mode", "screenOnly");
        defaults.setValue("micEnabled", false);
        defaults.setValue("countdown", false);
        defaults.setValue("showPanelOnLaunch", false);
        HotKeyCenter::shared().useService(&hotKeys);
    }
    ~AppDelegateTest() override
    {
        HotKeyCenter::shared().unregisterAll();
        HotKeyCenter::shared().useService(nullptr);
    }
    AppDelegateTest(const AppDelegateTest &) = delete;
    AppDelegateTest &operator=(const AppDelegateTest &) = delete;

    void launch()
    {
        delegate = std::make_unique<AppDelegate>(
            platform, resident, surfaces,
            ApplicationParts{&panel, &windows, &windows, &account, nullptr, nullptr, nullptr});
        delegate->applicationDidFinishLaunching();
        taken();
    }
    /// What comes of it.
    Log open(const QList<QUrl> &urls)
    {
        delegate->open(urls);
        return taken();
    }
    Log finishMovie(const QString &name)
    {
        delegate->coordinator().onFinished(QUrl::fromLocalFile("/v/" + name));
        return taken();
    }

    FakeHotKeyService hotKeys;
    FakeStatusItem statusItem;
    FakePasteboard pasteboard{log};
    ResidentPlatform resident{hotKeys, statusItem, pasteboard};
    FakePanel panel{clock};
    FakeWindows windows{log};
    FakeSecretStore secrets;
    CloudAccount account{{defaults, secrets, workspace, alerts, {}}};
    std::unique_ptr<AppDelegate> delegate;
};

} // namespace

TEST_F(AppDelegateTest, TheStatusItemShowsThePanelAndTheMenu)
{
    defaults.setValue("showPanelOnLaunch", true);
    launch();
    EXPECT_TRUE(panel.visible);
    for (const bool shown : {false, false, true}) {
        statusItem.click();
        EXPECT_EQ(panel.visible, shown) << "the click that hid it does not show it";
        clock.advance(200);
    }
    panel.hide();
    QStringList titles;
    for (const MenuItem &item : statusItem.menu()) {
        titles << item.title + item.keyEquivalent;
        if (item.action && item.title != "Quit Zivra") {
            item.action();
        }
    }
    EXPECT_EQ(titles, QStringList({"New Recording…", "My Videos", "", "Settings…,", "", "Quit Zivraq"}));
    EXPECT_TRUE(panel.visible);
    EXPECT_EQ(taken().filter(QRegularExpression("library|settings")), Log({"library", "settings"}));
}

TEST_F(AppDelegateTest, HotKeysFollowTheSettings)
{
    launch();
    ASSERT_EQ(hotKeys.active.size(), 4U);
    hotKeys.press(37, 2560);
    settle();
    EXPECT_EQ(alerts.shown.size(), 1U) << "the take was tried: there is no display in the content";
    delegate->settings().setShortcut(std::nullopt, ShortcutAction::Cancel);
    EXPECT_EQ(hotKeys.active.size(), 4U) << "not before the settings are quiet";
    settleUntil([this] { return hotKeys.active.size() == 3; });
}

TEST_F(AppDelegateTest, RoutesItsURLsAndDropsTheRest)
{
    launch();
    EXPECT_EQ(
        open({QUrl("zivra://settings/shortcuts"), QUrl("zivra://settings/"), QUrl("zivra://settings/nowhere"),
              QUrl("https://record"), QUrl("zivra:record"), QUrl("zivra://other")}),
        Log({"settings 3", "settings", "settings"}));
    EXPECT_FALSE(panel.visible);
    account.setServerURL("http://127.0.0.1:9");
    EXPECT_EQ(open({QUrl("zivra://connect")}), Log({"settings 4"}));
    ASSERT_EQ(workspace.opened.size(), 1);
    const QString state = QUrlQuery(workspace.opened.first()).queryItemValue("state");
    open({QUrl("zivra://auth?token=t&state=" + state)});
    EXPECT_EQ(account.token(), "t");
    EXPECT_TRUE(panel.visible);
    panel.hide();
    EXPECT_EQ(open({QUrl("zivra://connect")}), Log({"settings 4"}));
    EXPECT_EQ(workspace.opened.size(), 1) << "connected already";
    open({QUrl("zivra://record")});
    EXPECT_TRUE(panel.visible);
}

TEST_F(AppDelegateTest, HandsAMovieOverAsFileOrLinkOnceTheVaultHasAnswered)
{
    launch();
    EXPECT_EQ(finishMovie("1.mp4"), Log({"copy file 1.mp4", "library 1.mp4"}));

    secrets.available = false; // it is asked again later
    CloudAccount later{{defaults, secrets, workspace, alerts, {}}};
    later.setServerURL("http://127.0.0.1:9");
    desktop::CurlSender sender;
    CloudUploader uploader(later, QUrl::fromLocalFile("/nowhere/"), movies, sender);
    delegate = std::make_unique<AppDelegate>(
        platform, resident, surfaces,
        ApplicationParts{nullptr, &windows, &windows, &later, &uploader, nullptr, nullptr});
    delegate->applicationDidFinishLaunching();
    secrets.available = secrets.reading.held = true;
    secrets.secret = "t";
    taken();
    EXPECT_EQ(finishMovie("2.mp4"), Log({"library 2.mp4"}));
    open({QUrl("zivra://connect")});
    secrets.reading.release();
    settleUntil([&] { return uploader.errors().contains("2.mp4"); });
    EXPECT_EQ(taken(), Log()) << "there was an upload, and no link";
    EXPECT_TRUE(workspace.opened.empty()) << "connected, as the vault says";
    later.setAutoUpload(false);
    EXPECT_EQ(finishMovie("3.mp4"), Log({"copy file 3.mp4", "library 3.mp4"}));
}

} // namespace zivra::test
