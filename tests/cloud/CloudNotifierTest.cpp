#include "cloud/CloudNotifier.h"

#include "cloud/AccountFixture.h"

namespace zivra::test {

namespace {

struct CloudNotifierTest : AccountFixture {
    CloudNotifierTest()
    {
        secrets.secret = "t";
        started();
        restart();
    }
    void restart()
    {
        notifier.reset();
        notifier = std::make_unique<CloudNotifier>(*account, defaults, center, workspace);
    }
    /// What is shown for one answer of the server.
    std::vector<Notification> poll(const std::string &body, int status = 200)
    {
        answer("/api/notifications", status, body);
        const std::size_t before = polls().size();
        settleUntil([&] {
            const bool asked = polls().size() > before;
            asked ? void() : notifier->start(); // dropped while it polls
            return asked;
        });
        const QString cursorBefore = cursor();
        QElapsedTimer patience;
        patience.start();
        settleUntil(
            [&] { return !center.shown.empty() || cursor() != cursorBefore || patience.hasExpired(200); });
        return std::exchange(center.shown, {});
    }
    std::vector<CloudServer::Request> polls() const
    {
        auto requests = server.requests();
        std::erase_if(requests,
                      [](const auto &each) { return !each.path.starts_with("/api/notifications"); });
        return requests;
    }
    QString cursor() const { return defaults.value("cloudNotificationsSince").toString("none"); }

    FakeNotificationCenter center;
    std::unique_ptr<CloudNotifier> notifier;
};

} // namespace

TEST_F(CloudNotifierTest, ShowsWhatIsNewSinceTheFirstAnswerOnce)
{
    const std::string item = R"({"id":"a","message":"M","url":"https://a.b/v","created_at":"t & 2"})";
    const std::string full = R"({"data":[)" + item + R"(],"server_time":"t+1"})";
    for (const std::string &body :
         {R"({"data":[)" + item + "]}", std::string(9000, '['), full.substr(0, 20)}) {
        EXPECT_TRUE(poll(body).empty());
        EXPECT_EQ(cursor(), "none");
    }
    EXPECT_TRUE(poll(full).empty());
    EXPECT_EQ(cursor(), "t+1");
    EXPECT_TRUE(poll(full, 401).empty() && account->isConnected());
    const QUrl url("https://a.b/v");
    const Notification shown{"a", "Someone watched your video", "M", true, url};
    EXPECT_EQ(poll(full), std::vector{shown});
    EXPECT_EQ(polls().back().path, "/api/notifications?since=t%2B1");
    EXPECT_EQ(cursor(), "t & 2");
    EXPECT_TRUE(poll(full).empty());
    EXPECT_EQ(polls().back().path, "/api/notifications?since=t%20%26%202");
    restart();
    EXPECT_EQ(poll(full), std::vector{shown}) << "the server lists it again";

    center.click(url);
    EXPECT_EQ(workspace.opened, QList{url});
    answer("/api/notifications", 200, full, "t", 200);
    const std::size_t before = polls().size();
    notifier->start();
    settleUntil([&] { return polls().size() > before; });
    account->useManualToken("another");
    EXPECT_EQ(cursor(), "none");
    settleUntil([&] { return polls().size() > before + 1; });
    EXPECT_EQ(cursor(), "none") << "the answer was for the account before";
}

TEST_F(CloudNotifierTest, ReadsItemsAsFarAsTheyAreWellFormed)
{
    secrets.reading.held = true;
    started();
    restart();
    defaults.setValue("cloudNotificationsSince", "1");
    notifier->start();
    secrets.reading.release();
    const auto shown =
        poll(R"({"server_time":"9","data":[{"id":4},7,null,{"id":"c","kind":"comment","excerpt":"e",
        "url":"file:///etc/passwd"},{"id":"r","kind":"reaction","message":"m","excerpt":"","url":"javascript:x"},
        {"id":"v","kind":[],"message":{},"excerpt":1,"url":3,"created_at":4},{"id":"v"}]})");
    const std::vector<Notification> expected{{"c", "New comment", "\n\u201ce\u201d", true, {}},
                                             {"r", "New reaction", "m", true, {}},
                                             {"v", "Someone watched your video", "", true, {}}};
    EXPECT_EQ(shown, expected);
    EXPECT_EQ(polls().front().path, "/api/notifications?since=1") << "the vault's answer is no new account";
    EXPECT_EQ(cursor(), "1");
}

} // namespace zivra::test
