#include "desktop/session/SingleInstance.h"

#include <QTest>

#include <gtest/gtest.h>

#include <future>
#include <optional>

namespace zivra::desktop {

namespace {

QDBusConnection connectToBus(const QString &name)
{
    return QDBusConnection::connectToBus(QDBusConnection::SessionBus, name);
}

TEST(SingleInstanceTest, laterInstancesHandOverUntilTheFirstEnds)
{
    int activations = 0;
    QList<QUrl> opened;
    std::optional<SingleInstance> first(connectToBus("first"));
    first->setActivateHandler([&] { ++activations; });
    first->setOpenHandler([&](const QList<QUrl> &urls) { opened += urls; });
    ASSERT_EQ(first->claim(), SingleInstance::Role::Primary);

    SingleInstance second(connectToBus("second"));
    const QList<QUrl> urls{QUrl("zivra://auth?token=a%20b%2Bc"), QUrl("file:///tmp/%C3%A4.mp4")};
    auto handedOver = std::async(std::launch::async, [&] {
        return second.claim() == SingleInstance::Role::Secondary && second.handOver({}) &&
               second.handOver(urls);
    });
    EXPECT_TRUE(QTest::qWaitFor([&] { return opened.size() == 2; }));
    EXPECT_TRUE(handedOver.get());
    EXPECT_EQ(opened, urls);
    EXPECT_EQ(activations, 1);

    first.reset();
    EXPECT_FALSE(second.handOver({}));
    EXPECT_EQ(second.claim(), SingleInstance::Role::Primary);
}

} // namespace

} // namespace zivra::desktop
