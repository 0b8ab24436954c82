#include "settings/HotKeyCenter.h"

#include "support/PrintQt.h"
#include "support/fakes/FakeHotKeyService.h"

#include <QCoreApplication>
#include <QStringList>

#include <gtest/gtest.h>

namespace zivra::test {

namespace {

struct HotKeyCenterTest : testing::Test {
    void add(std::uint32_t keyCode)
    {
        center.registerHotKey(Shortcut(keyCode, Shortcut::kOption, "x"),
                              [this, keyCode] { ran << QString::number(keyCode); });
    }
    /// What ran at this press.
    QStringList press(std::uint32_t keyCode)
    {
        service.press(keyCode, Shortcut::kOption);
        EXPECT_TRUE(ran.isEmpty()) << "ran inside the desktop's callback";
        QCoreApplication::processEvents();
        return std::exchange(ran, {});
    }

    FakeHotKeyService service;
    HotKeyCenter center{&service};
    QStringList ran;
};

} // namespace

TEST_F(HotKeyCenterTest, RunsTheHandlerFromTheEventLoop)
{
    center.useService(nullptr);
    add(1);
    center.useService(&service);
    add(2);
    EXPECT_EQ(press(1), QStringList("1")) << "asked for before there was a service";
    EXPECT_EQ(press(2), QStringList("2"));
    service.press(1, Shortcut::kOption);
    center.unregisterAll();
    EXPECT_TRUE(service.active.empty());
    add(3);
    QCoreApplication::processEvents();
    EXPECT_TRUE(ran.isEmpty()) << "neither a key that has gone meanwhile nor one in its place";
}

TEST_F(HotKeyCenterTest, HandlerMayReplaceAllHotKeys)
{
    center.registerHotKey(Shortcut(1, Shortcut::kOption, "x"), [this, kept = QString("kept")] {
        center.unregisterAll();
        add(2);
        ran << kept;
    });
    EXPECT_EQ(press(1), QStringList("kept"));
    EXPECT_EQ(press(2), QStringList("2"));
}

TEST_F(HotKeyCenterTest, SuspendsAndResumesAndTriesARefusedCombinationAgain)
{
    service.takenByOthers = {{3, Shortcut::kOption}};
    center.resume();
    add(1);
    add(3);
    EXPECT_TRUE(press(3).isEmpty());
    center.suspend();
    center.suspend();
    add(2);
    EXPECT_TRUE(service.active.empty());
    EXPECT_EQ(service.unregistrations, 1);
    service.takenByOthers.clear();
    center.resume();
    center.resume();
    for (const int keyCode : {1, 2, 3}) {
        EXPECT_EQ(press(keyCode), QStringList(QString::number(keyCode)));
    }
    center.suspend();
    center.unregisterAll();
    EXPECT_EQ(service.unregistrations, 4) << "what is not active is dropped without the desktop";
}

} // namespace zivra::test
