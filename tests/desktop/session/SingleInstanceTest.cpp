#include "desktop/session/SingleInstance.h"

#include <QTest>

#include <gtest/gtest.h>

#include <future>

namespace zivra::desktop {

namespace {

QDBusConnection connectToBus(const QString &name)
{
    return QDBusConnection::connectToBus(QDBusConnection::SessionBus, name);
}

TEST(SingleInstanceTest, secondInstanceHandsOverToTheFirst)
{
    int activations = 0;
    QList<QUrl> opened;
    SingleInstance first(connectToBus("first"));
    first.setActivateHandler([&] { ++activations; });
    first.setOpenHandler([&](const QList<QUrl> &urls) { opened += urls; });
    ASSERT_EQ(first.claim(), SingleInstance::Role::Primary);

    const QList<QUrl> urls{QUrl("zivra://auth?token=a%20b%2Bc"), QUrl("file:///tmp/%C3%A4.mp4")};
    auto second = std::async(std::launch::async, [&] {
        SingleInstance instance(connectToBus("second"));
        return instance.claim() == SingleInstance::Role::Secondary && instance.handOver({}) &&
               instance.handOver(urls);
    });
    EXPECT_TRUE(QTest::qWaitFor([&] { return opened.size() == 2; }));
    EXPECT_TRUE(second.get());
    EXPECT_EQ(opened, urls);
    EXPECT_EQ(activations, 1);
}

TEST(SingleInstanceTest, nameIsFreeAfterTheFirstEnds)
{
    SingleInstance second(connectToBus("third"));
    {
        SingleInstance first(connectToBus("fourth"));
        ASSERT_EQ(first.claim(), SingleInstance::Role::Primary);
        ASSERT_EQ(second.claim(), SingleInstance::Role::Secondary);
    }
    EXPECT_FALSE(second.handOver({}));
    EXPECT_EQ(second.claim(), SingleInstance::Role::Primary);
}

TEST(SingleInstanceTest, runsWithoutABus)
{
    SingleInstance instance(QDBusConnection("not connected"));
    EXPECT_EQ(instance.claim(), SingleInstance::Role::NoBus);
    EXPECT_FALSE(instance.handOver({}));
}

} // namespace

} // namespace zivra::desktop
