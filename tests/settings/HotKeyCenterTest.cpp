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
    std::vector<std::uint32_t> activeIDs() const
    {
        std::vector<std::uint32_t> ids;
        for (const auto &[reference, active] : service.active) {
            ids.push_back(active.id);
        }
        return ids;
    }

    FakeHotKeyService service;
    HotKeyCenter center{&service};
    QStringList ran;
};

} // namespace

TEST_F(HotKeyCenterTest, RunsTheHandlerFromTheEventLoop)
{
    add(1);
    add(2);
    EXPECT_EQ(press(2), QStringList("2"));
    service.press(1, Shortcut::kOption);
    center.unregisterAll();
    QCoreApplication::processEvents();
    EXPECT_TRUE(ran.isEmpty()) << "a press whose key has gone meanwhile";
}

TEST_F(HotKeyCenterTest, NeverUsesAnIDTwice)
{
    add(1);
    add(2);
    center.unregisterAll();
    EXPECT_TRUE(service.active.empty());
    add(1);
    EXPECT_EQ(activeIDs(), std::vector<std::uint32_t>{3});
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

TEST_F(HotKeyCenterTest, SuspendsAndResumes)
{
    center.resume();
    add(1);
    center.suspend();
    center.suspend();
    add(2);
    EXPECT_TRUE(service.active.empty());
    EXPECT_EQ(service.unregistrations, 1);
    center.resume();
    center.resume();
    EXPECT_EQ(activeIDs(), (std::vector<std::uint32_t>{1, 2}));
    center.suspend();
    center.unregisterAll();
    EXPECT_EQ(service.unregistrations, 3) << "what is not active is dropped without the desktop";
}

TEST_F(HotKeyCenterTest, TriesARefusedCombinationAgain)
{
    service.takenByOthers = {{1, Shortcut::kOption}};
    add(1);
    EXPECT_TRUE(press(1).isEmpty());
    service.takenByOthers.clear();
    center.suspend();
    center.resume();
    EXPECT_EQ(press(1), QStringList("1"));
}

TEST_F(HotKeyCenterTest, MayBeGivenItsServiceLate)
{
    HotKeyCenter &shared = HotKeyCenter::shared();
    shared.registerHotKey(Shortcut(7, Shortcut::kOption, "x"), [this] { ran << "shared"; });
    shared.useService(&service);
    EXPECT_EQ(press(7), QStringList("shared"));
    shared.unregisterAll();
    shared.useService(nullptr);
    EXPECT_TRUE(service.active.empty());
}

} // namespace zivra::test
