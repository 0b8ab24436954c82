#include "desktop/session/QtPasteboard.h"

#include <QProcess>
#include <QTest>

#include <gtest/gtest.h>

namespace zivra::desktop {

namespace {

/// What another program is given for a type.
QByteArray pasted(const QString &type)
{
    QProcess xclip;
    xclip.start("xclip", {"-o", "-selection", "clipboard", "-t", type});
    EXPECT_TRUE(QTest::qWaitFor([&] { return xclip.state() == QProcess::NotRunning; }));
    return xclip.readAllStandardOutput();
}

TEST(QtPasteboardTest, otherProgramsPasteTextAndFiles)
{
    QtPasteboard pasteboard;
    pasteboard.setString("https://example.com/ä");
    EXPECT_EQ(pasted("UTF8_STRING"), "https://example.com/ä");

    pasteboard.setFile(QUrl::fromLocalFile("/tmp/Take 1 ä.mp4"));
    EXPECT_EQ(pasted("text/uri-list"), "file:///tmp/Take%201%20%C3%A4.mp4\r\n");
    EXPECT_EQ(pasted("x-special/gnome-copied-files"), "copy\nfile:///tmp/Take%201%20%C3%A4.mp4");
    EXPECT_EQ(pasted("application/x-kde-cutselection"), "0");
    EXPECT_EQ(pasted("UTF8_STRING"), "/tmp/Take 1 ä.mp4");
}

} // namespace

} // namespace zivra::desktop
