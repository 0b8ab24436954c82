#include "app/AppDelegate.h"

#include "app/FakeSurfaces.h"
#include "support/fakes/FakeCaptureStream.h"
#include "support/fakes/FakeHotKeyService.h"
#include "support/fakes/ManualQueue.h"

#include <QCoreApplication>
#include <QRegularExpression>

#include <gtest/gtest.h>

#include <algorithm>

namespace zivra::test {

namespace {

struct FakeStatusItem final : StatusItem {
    void setGlyph(StatusGlyph value) override { glyph = value; }
    void setToolTip(const QString &value) override { toolTip = value; }
    void setClickHandler(std::function<void()> handler) override { click = std::move(handler); }
    void setMenuProvider(std::function<std::vector<MenuItem>()> provider) override
    {
        menu = std::move(provider);
    }
    std::optional<QRectF> frame() const override { return QRectF(5, 0, 20, 20); }

    StatusGlyph glyph = StatusGlyph::Idle;
    QString toolTip;
    std::function<void()> click;
    std::function<std::vector<MenuItem>()> menu;
};

struct FakePasteboard final : Pasteboard {
    void setString(const QString &text) override { content = "text " + text; }
    void setFile(const QUrl &fileURL) override { content = "file " + fileURL.fileName(); }
    QString content = "untouched";
};

struct FakePanel final : RecorderPanelController {
    explicit FakePanel(MediaClock &mediaClock) : clock(mediaClock) {}
    void show(const std::optional<QRectF> &frame) override
    {
        below = frame;
        visible = true;
    }
    void hide() override
    {
        visible = false;
        hidden = clock.now();
    }
    bool isVisible() const override { return visible; }
    MediaTime hiddenAt() const override { return hidden; }
    MediaClock &clock;
    std::optional<QRectF> below;
    bool visible = false;
    MediaTime hidden;
};

struct FakeWindows final : LibraryWindowController, SettingsWindowController {
    explicit FakeWindows(Log &entries) : log(entries) {}
    void show(const std::optional<QUrl> &focus) override
    {
        log << "library" + (focus ? " " + focus->fileName() : QString());
    }
    void show(std::optional<SettingsPane> pane) override
    {
        log << "settings" + (pane ? QString(" %1").arg(static_cast<int>(*pane)) : QString());
    }
    Log &log;
};

struct FakeCloud final : CloudAccount, CloudUploader {
    explicit FakeCloud(Log &entries) : log(entries) {}
    bool hasToken() const override { return token; }
    bool autoUpload() const override { return automatic; }
    void connect() override { log << "connect"; }
    bool handleCallback(const QUrl &url) override
    {
        log << "callback " + url.query();
        return true;
    }
    void upload(const QUrl &file, std::function<void(const QString &)> callback) override
    {
        log << "upload " + file.fileName();
        onLink = std::move(callback);
    }
    Log &log;
    bool token = false;
    bool automatic = true;
    std::function<void(const QString &)> onLink;
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
            platform, resident,
            RecordingSurfaces{camera, bubble, drawing, controlBar, countdown, areaSelector},
            ApplicationParts{&panel, &windows, &windows, &cloud, &cloud, nullptr, nullptr});
        delegate->applicationDidFinishLaunching();
    }
    void finishMovie(const QString &name) { delegate->coordinator().onFinished(QUrl::fromLocalFile(name)); }

    FakeCaptureStreams streams;
    ManualQueueFactory queues;
    FakeHotKeyService hotKeys;
    FakeStatusItem statusItem;
    FakePasteboard pasteboard;
    Platform platform{defaults, clock,  screens, content, screenAccess, authorization, catalog,
                      streams,  movies, queues,  files,   alerts,       workspace};
    ResidentPlatform resident{hotKeys, statusItem, pasteboard};
    FakePanel panel{clock};
    FakeWindows windows{log};
    FakeCloud cloud{log};
    std::unique_ptr<AppDelegate> delegate;
};

} // namespace

TEST_F(AppDelegateTest, TheStatusItemShowsThePanelAndTheMenu)
{
    defaults.setValue("showPanelOnLaunch", true);
    launch();
    EXPECT_EQ(panel.below, QRectF(5, 0, 20, 20));
    EXPECT_EQ(statusItem.toolTip, "Zivra");
    statusItem.click();
    EXPECT_FALSE(panel.visible);
    clock.advance(200);
    statusItem.click();
    EXPECT_FALSE(panel.visible) << "the click that hid it";
    clock.advance(200);
    statusItem.click();
    EXPECT_TRUE(panel.visible);

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
    EXPECT_EQ(hotKeys.active.size(), 3U);
}

TEST_F(AppDelegateTest, RoutesItsURLsAndDropsTheRest)
{
    launch();
    taken();
    delegate->open({QUrl("zivra://settings/shortcuts"), QUrl("zivra://settings/"),
                    QUrl("zivra://settings/nowhere"), QUrl("zivra://connect"), QUrl("https://record"),
                    QUrl("zivra:record"), QUrl("zivra://other")});
    EXPECT_EQ(taken(), Log({"settings 3", "settings", "settings", "settings 4", "connect"}));
    EXPECT_FALSE(panel.visible);
    cloud.token = true;
    delegate->open({QUrl("zivra://connect")});
    EXPECT_EQ(taken(), Log({"settings 4"}));
    delegate->open({QUrl("zivra://auth?token=t&state=s")});
    EXPECT_EQ(taken(), Log({"callback token=t&state=s"}));
    EXPECT_TRUE(panel.visible);
    panel.hide();
    delegate->open({QUrl("zivra://record")});
    EXPECT_TRUE(panel.visible);
    delegate->reopen();
    EXPECT_EQ(taken(), Log({"library"}));
}

TEST_F(AppDelegateTest, HandsAMovieOverAsFileOrLink)
{
    launch();
    taken();
    finishMovie("/v/one.mp4");
    EXPECT_EQ(pasteboard.content, "file one.mp4");
    EXPECT_EQ(taken(), Log({"library one.mp4"}));

    cloud.token = true;
    finishMovie("/v/two.mp4");
    EXPECT_EQ(pasteboard.content, "file one.mp4") << "left alone until the link is there";
    EXPECT_EQ(taken(), Log({"upload two.mp4", "library two.mp4"}));
    cloud.onLink("https://example.org/v/2");
    EXPECT_EQ(pasteboard.content, "text https://example.org/v/2");

    cloud.automatic = false;
    finishMovie("/v/three.mp4");
    EXPECT_EQ(pasteboard.content, "file three.mp4");
}

} // namespace zivra::test
