#include "cloud/CloudNotifier.h"

#include "support/CloudServer.h"
#include "support/PrintQt.h"
#include "support/fakes/Await.h"
#include "support/fakes/FakeCloudDesktop.h"
#include "support/fakes/FakeDesktop.h"
#include "support/fakes/FakeUserDefaults.h"

#include <gtest/gtest.h>

namespace zivra::test {

namespace {

struct CloudNotifierTest : testing::Test {
    CloudNotifierTest()
    {
        defaults.setValue("cloudServer", server.url());
        secrets.secret = "t";
        account =
            std::make_unique<CloudAccount>(CloudAccountServices{defaults, secrets, workspace, alerts, {}});
        restart();
    }
    void restart()
    {
        notifier.reset();
        notifier = std::make_unique<CloudNotifier>(*account, defaults, center, workspace);
    }
    /// What is shown for one answer of the server.
    std::vector<Notification> poll(const std::string &answer, int status = 200)
    {
        server.setFault([=](const CloudServer::Request &request) {
            return request.path.starts_with("/api/notifications")
                       ? std::optional(CloudServer::Fault{status, answer})
                       : std::nullopt;
        });
        const std::size_t before = polls().size();
        notifier->start();
        settleUntil([&] { return polls().size() > before; });
        notifier->start(); // dropped while the first is under way
        QElapsedTimer answering;
        answering.start();
        settleUntil([&] { return answering.hasExpired(60); });
        return std::exchange(center.shown, {});
    }
    std::vector<std::string> polls() const
    {
        std::vector<std::string> paths;
        for (const auto &request : server.requests()) {
            if (request.path.starts_with("/api/notifications")) {
                paths.push_back(request.path);
            }
        }
        return paths;
    }
    QString cursor() const { return defaults.value("cloudNotificationsSince").toString("none"); }

    CloudServer server;
    FakeUserDefaults defaults;
    FakeSecretStore secrets;
    FakeWorkspace workspace;
    FakeAlerts alerts;
    FakeNotificationCenter center;
    std::unique_ptr<CloudAccount> account;
    std::unique_ptr<CloudNotifier> notifier;
};

} // namespace

TEST_F(CloudNotifierTest, ShowsWhatIsNewSinceTheFirstAnswerOnce)
{
    const std::string item = R"({"id":"a","message":"M","url":"https://a.b/v","created_at":"t & 2"})";
    const std::string full = R"({"data":[)" + item + R"(],"server_time":"t+1"})";
    for (const std::string &answer : {std::string(R"({"data":[)") + item + "]}", std::string("{}"),
                                      std::string("[1]"), std::string(9000, '['), full.substr(0, 20)}) {
        EXPECT_TRUE(poll(answer).empty());
        EXPECT_EQ(cursor(), "none");
    }
    EXPECT_TRUE(poll(full).empty());
    EXPECT_EQ(cursor(), "t+1");
    EXPECT_TRUE(poll(full, 401).empty());
    EXPECT_TRUE(account->isConnected());
    const QUrl url("https://a.b/v");
    const Notification shown{"a", "Someone watched your video", "M", true, url};
    EXPECT_EQ(poll(full), std::vector{shown});
    EXPECT_EQ(polls().back(), "/api/notifications?since=t%2B1");
    EXPECT_EQ(cursor(), "t & 2");
    EXPECT_TRUE(poll(full).empty());
    EXPECT_EQ(polls().back(), "/api/notifications?since=t%20%26%202");
    restart();
    EXPECT_EQ(poll(full), std::vector{shown}) << "the server lists it again";

    center.click(url);
    EXPECT_EQ(workspace.opened, QList{url});
    account->setActivityNotifications(false);
    const std::size_t before = polls().size();
    account->disconnect();
    account->useManualToken("other");
    settle();
    EXPECT_EQ(cursor(), "none");
    EXPECT_EQ(polls().size(), before);
    account->setActivityNotifications(true);
    EXPECT_TRUE(poll(full).empty()) << "the other account's history";
}

TEST_F(CloudNotifierTest, ReadsItemsAsFarAsTheyAreWellFormed)
{
    defaults.setValue("cloudNotificationsSince", "1");
    const auto shown =
        poll(R"({"server_time":"9","data":[{"id":4},7,null,{"id":"c","kind":"comment","excerpt":"e",
        "url":"file:///etc/passwd"},{"id":"r","kind":"reaction","message":"m","excerpt":"","url":"javascript:x"},
        {"id":"v","kind":[],"message":{},"excerpt":1,"url":3,"created_at":4},{"id":"v"}]})");
    const std::vector<Notification> expected{{"c", "New comment", "\n\u201ce\u201d", true, {}},
                                             {"r", "New reaction", "m", true, {}},
                                             {"v", "Someone watched your video", "", true, {}}};
    EXPECT_EQ(shown, expected);
    EXPECT_EQ(cursor(), "1");
    EXPECT_TRUE(poll(R"({"data":{"id":"x"},"server_time":"9"})").empty());
    EXPECT_EQ(cursor(), "1");
}

TEST_F(CloudNotifierTest, DropsTheAnswerForAnAccountThatHasGone)
{
    server.setFault([](const CloudServer::Request &request) {
        const bool old = request.headers.at("Authorization") == "Bearer t";
        return CloudServer::Fault{
            200, old ? R"({"server_time":"old"})" : R"({"server_time":"new"})", {}, false, old ? 200 : 0};
    });
    notifier->start();
    settleUntil([this] { return !polls().empty(); });
    account->useManualToken("other");
    settleUntil([this] { return cursor() != "none"; });
    EXPECT_EQ(cursor(), "new");
}

} // namespace zivra::test
