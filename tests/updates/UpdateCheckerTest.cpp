#include "updates/UpdateChecker.h"

#include "support/CloudServer.h"
#include "support/PrintQt.h"
#include "support/fakes/Await.h"
#include "support/fakes/FakeCloudDesktop.h"
#include "support/fakes/FakeUserDefaults.h"

#include <QDateTime>

#include <gtest/gtest.h>

namespace zivra::test {

namespace {

using Kind = UpdateState::Kind;

std::string offer(const std::string &version)
{
    return R"({"version":")" + version + R"(","download_url":"https://a.b/d"})";
}

struct UpdateCheckerTest : testing::Test {
    UpdateState check(const CloudServer::Fault &feed)
    {
        server.setFault([=](const auto &) { return feed; });
        UpdateChecker checker(QUrl(server.url()), "1.2", defaults, notifications);
        await(checker.check());
        return checker.state();
    }

    CloudServer server;
    FakeUserDefaults defaults;
    FakeNotificationCenter notifications;
};

} // namespace

TEST_F(UpdateCheckerTest, OffersHigherVersionsWithAWebAddress)
{
    for (const std::string version : {"2", "1.2.0.1", "1.10", "..1..5."}) {
        EXPECT_EQ(check({200, offer(version)}).kind, Kind::Available) << version;
    }
    for (const std::string version : {"1.2", "1.2.0.0", "1.1.9", "1.x", "1. 5", "", "99999999999999999999"}) {
        EXPECT_EQ(check({200, offer(version)}).kind, Kind::UpToDate) << version;
    }
    const std::string file = R"({"version":"2","download_url":"file:///bin/sh"})";
    const std::string number = R"({"version":2,"download_url":"https://a.b/d"})";
    for (const auto &[status, body] :
         {std::pair(404, offer("2")), {201, offer("2")}, {200, "[]"}, {200, number}, {200, file}}) {
        EXPECT_EQ(check({status, body}).kind, Kind::UpToDate) << body;
    }
    for (const std::string &body : {std::string("nonsense"), std::string(9000, '[')}) {
        EXPECT_FALSE(check({200, body}).error.isEmpty()) << body;
    }
    EXPECT_EQ(check({.cuts = true}).kind, Kind::Failed);
}

TEST_F(UpdateCheckerTest, TellsOfANewVersionOnceADay)
{
    server.setFault([](const auto &) { return CloudServer::Fault{200, offer("2.0")}; });
    const auto ago = [](int seconds) {
        return QDateTime::currentDateTimeUtc().addSecs(-seconds).toString(Qt::ISODateWithMs);
    };
    const std::pair<QJsonValue, bool> cases[] = {
        {{}, true}, {5, true}, {"yesterday", true}, {ago(86'300), false}, {ago(86'500), true}};
    for (const auto &[last, asks] : cases) {
        defaults.setValue("lastUpdateCheck", last);
        UpdateChecker checker(QUrl(server.url()), "1", defaults, notifications);
        checker.checkDailyInBackground();
        EXPECT_EQ(defaults.value("lastUpdateCheck") != last, asks) << "before the check has ended";
        if (asks) {
            settleUntil([this] { return !notifications.shown.empty(); });
            const Notification told{"update-2.0", "Zivra 2.0 is available", "Click to download the update.",
                                    false, QUrl("https://a.b/d")};
            EXPECT_EQ(std::exchange(notifications.shown, {}), std::vector{told});
        }
    }
    EXPECT_EQ(server.requests().size(), 4U);
}

} // namespace zivra::test
