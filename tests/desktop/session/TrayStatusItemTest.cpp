#include "desktop/session/TrayStatusItem.h"

#include <QApplication>
#include <QProcess>
#include <QScreen>
#include <QStandardPaths>
#include <QTest>

#include <gtest/gtest.h>

namespace zivra::desktop {

namespace {

/// A tray at the top right of the screen, with a dark panel.
class TrayStatusItemTest : public testing::Test {
protected:
    void SetUp() override
    {
        if (QStandardPaths::findExecutable("trayer").isEmpty()) {
            GTEST_SKIP() << "needs trayer";
        }
        m_tray.start("trayer",
                     QString("--edge top --align right --widthtype request --heighttype pixel --height 24 "
                             "--tint 0x202020 --transparent true --alpha 0")
                         .split(' '));
        // On its way there the icon's window is in the screen's other corner, the panel anywhere.
        const auto edge = QGuiApplication::primaryScreen()->geometry().right();
        ASSERT_TRUE(QTest::qWaitFor([&] { return m_item.frame() && edge - m_item.frame()->right() < 10; }));
        QTest::qWait(300);
        const auto center = m_item.frame()->center().toPoint();
        pointer(QString("mousemove %1 %2").arg(center.x()).arg(center.y()));
    }

    ~TrayStatusItemTest() override
    {
        m_tray.terminate();
        m_tray.waitForFinished();
    }

    static void pointer(const QString &commands) { QProcess::execute("xdotool", commands.split(' ')); }

    TrayStatusItem m_item;
    QProcess m_tray;
};

TEST_F(TrayStatusItemTest, clickCountsAtTheRelease)
{
    int clicks = 0;
    m_item.setClickHandler([&] { ++clicks; });
    pointer("mousedown 1");
    QTest::qWait(200);
    EXPECT_EQ(clicks, 0);
    pointer("mouseup 1 click 1");
    EXPECT_TRUE(QTest::qWaitFor([&] { return clicks == 2; }));
}

TEST_F(TrayStatusItemTest, rightButtonOpensAFreshMenu)
{
    int opened = 0;
    QString chosen;
    m_item.setMenuProvider([&]() -> std::vector<MenuItem> {
        const auto number = QString::number(++opened);
        return {{"Start", {}, [&chosen, number] { chosen = "start" + number; }},
                {},
                {"Quit", "q", [&chosen, number] { chosen = "quit" + number; }}};
    });
    const auto choose = [&](int count, const QString &key) {
        pointer("click 3");
        EXPECT_TRUE(QTest::qWaitFor([&] { return opened == count; }));
        QTest::qWait(200); // the menu takes the keyboard
        pointer("key " + key);
    };
    choose(1, "ctrl+q");
    EXPECT_TRUE(QTest::qWaitFor([&] { return chosen == "quit1"; }));
    QTest::qWait(QApplication::doubleClickInterval());
    choose(2, "Down");
    pointer("key Return");
    EXPECT_TRUE(QTest::qWaitFor([&] { return chosen == "start2"; }));
}

} // namespace

} // namespace zivra::desktop
