#include "desktop/session/DBusNotificationCenter.h"

#include "support/Eventually.h"
#include "support/PrintQt.h"
#include "support/Shell.h"

#include <gtest/gtest.h>

namespace zivra::desktop {

namespace {

/// A property or the answer of the notification service of the tests, as text.
QByteArray service(const QString &question)
{
    return shell("dbus-send --session --print-reply=literal --dest=org.freedesktop.Notifications "
                 "/org/freedesktop/Notifications " +
                 question);
}

bool shows(int count)
{
    return service("org.freedesktop.DBus.Properties.Get string:org.dunstproject.cmd0 string:displayedLength")
        .contains("uint32 " + QByteArray::number(count));
}

} // namespace

TEST(DBusNotificationCenter, ShowsPlainTextOnceForEachIdentifierAndOpensWhatIsClicked)
{
    // A left click on a notification of this service does what its default action is.
    shell("mkdir -p $XDG_CONFIG_HOME/dunst; printf '[global]\\nmouse_left_click = do_action, close_current\\n"
          "markup = full\\n' >$XDG_CONFIG_HOME/dunst/dunstrc");
    DBusNotificationCenter center;
    QList<QUrl> opened;
    center.setActivationHandler([&](const QUrl &url) { opened << url; });
    const QUrl link("https://videos.zivra.example/v/1?a=b&c=d");
    center.show({.identifier = "1", .title = "Older", .body = {}, .sound = true, .url = link});
    center.show(
        {.identifier = "1", .title = "New", .body = "a<b>\n\u201cc & d\u201d", .sound = true, .url = link});
    center.show({.identifier = "2", .title = "No link", .body = {}, .sound = false, .url = {}});
    ASSERT_TRUE(eventually([] { return shows(2); }));

    for (int closed = 1; closed <= 2; ++closed) {
        shell("xdotool mousemove --window $(xdotool search --onlyvisible --class dunst | head -1) 20 20 "
              "click 1");
        ASSERT_TRUE(eventually([&] { return shows(2 - closed); }));
    }
    EXPECT_TRUE(eventually([&] { return opened == QList{link}; }));
    const QByteArray history = service("org.dunstproject.cmd0.NotificationListHistory");
    EXPECT_TRUE(history.contains("a&lt;b&gt;\n\u201cc &amp; d\u201d")) << history.constData();
    EXPECT_FALSE(history.contains("Older"));
}

} // namespace zivra::desktop
