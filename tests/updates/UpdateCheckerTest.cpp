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
    UpdateState check(const CloudServer::Fault &feed, const QString &current)
    {
        server.setFault([=](const auto &) { return feed; });
        UpdateChecker checker(QUrl(server.url() + "/updates/mac/latest"), current, defaults, notifications);
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
    const std::tuple<std::string, QString, bool> versions[] = {{"2", "1.9.9", true},
                                                               {"1.2.3", "1.2.3", false},
                                                               {"1.2.3.0", "1.2.3", false},
                                                               {"1.2.3.1", "1.2.3", true},
                                                               {"1.0", "1.9", false},
                                                               {"1.10", "1.9", true},
                                                               {"1.2-beta", "1.1", false},
                                                               {"1. 5", "1.4", false},
                                                               {"..1..5.", "1.4", true},
                                                               {"", "0.0.1", false},
                                                               {"99999999999999999999", "1", false},
                                                               {"1.1", "", true}};
    for (const auto &[version, current, newer] : versions) {
        const UpdateState state = check({200, offer(version)}, current);
        EXPECT_EQ(state.kind, newer ? Kind::Available : Kind::UpToDate)
            << version << ' ' << current.toStdString();
        EXPECT_EQ(state.download, newer ? QUrl("https://a.b/d") : QUrl());
    }
    const std::tuple<CloudServer::Fault, Kind> feeds[] = {
        {{404, offer("2")}, Kind::UpToDate},
        {{201, offer("2")}, Kind::UpToDate},
        {{200, "[]"}, Kind::UpToDate},
        {{200, R"({"version":2,"download_url":"https://a.b/d"})"}, Kind::UpToDate},
        {{200, R"({"version":"2"})"}, Kind::UpToDate},
        {{200, R"({"version":"2","download_url":"file:///bin/sh"})"}, Kind::UpToDate},
        {{200, "nonsense"}, Kind::Failed},
        {{200, std::string(9000, '[')}, Kind::Failed},
        {{.cuts = true}, Kind::Failed}};
    for (const auto &[feed, kind] : feeds) {
        const UpdateState state = check(feed, "1");
        EXPECT_EQ(state.kind, kind) << feed.body;
        EXPECT_EQ(state.error.isEmpty(), kind != Kind::Failed);
    }
}

TEST_F(UpdateCheckerTest, TellsOfANewVersionOnceADay)
{
    server.setFault([](const auto &) { return CloudServer::Fault{200, offer("2.0")}; });
    const auto hoursAgo = [](double hours) {
        const qint64 milliseconds = static_cast<qint64>(hours * 3'600'000);
        return QDateTime::currentDateTimeUtc().addMSecs(-milliseconds).toString(Qt::ISODateWithMs);
    };
    const std::pair<QJsonValue, bool> cases[] = {
        {{}, true}, {5, true}, {"yesterday", true}, {hoursAgo(23.9), false}, {hoursAgo(24.1), true}};
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
    UpdateChecker nobody(UpdateChecker::standardFeed(), "0", defaults, notifications);
    await(nobody.check());
    EXPECT_EQ(nobody.state().kind, Kind::UpToDate) << "never asked";
}

} // namespace zivra::test
