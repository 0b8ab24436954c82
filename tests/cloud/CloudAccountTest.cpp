#include "cloud/AccountFixture.h"

#include <QUrlQuery>

namespace zivra::test {

namespace {

struct CloudAccountTest : AccountFixture {
    /// The state of the sign-in that it starts.
    QString signIn()
    {
        account->connect();
        return QUrlQuery(workspace.opened.last()).queryItemValue("state");
    }
};

} // namespace

TEST_F(CloudAccountTest, TalksToUsableServersOnly)
{
    defaults.removeValue("cloudServer");
    EXPECT_EQ(started().normalizedServer(), std::nullopt) << "a build without an operator";
    account->setServerURL("  https://a.b/c//\n");
    EXPECT_EQ(account->normalizedServer(), QUrl("https://a.b/c"));
    for (const QString typed :
         {"", "a.b", "ftp://a.b", "https://", "https://a b", "https://cloud.zivra.example."}) {
        account->setServerURL(typed);
        EXPECT_EQ(account->normalizedServer(), std::nullopt) << typed.toStdString();
    }
    account->connect();
    EXPECT_EQ(account->lastError(), "The server address isn't valid.");
    EXPECT_TRUE(workspace.opened.empty());
}

TEST_F(CloudAccountTest, TakesATokenForItsOwnSignInOnce)
{
    defaults.setValue("cloudServer", server.url() + "/sub/");
    started();
    const QString older = signIn();
    const QString state = signIn();
    EXPECT_EQ(state.size(), 32);
    EXPECT_EQ(workspace.opened.last().toEncoded(),
              (server.url() + "/sub/desktop/connect?state=" + state + "&device=A%20%26%20B%2B").toUtf8());
    const QString good = "&state=" + state;
    for (const QString &query :
         QStringList{"", "token=t", good.mid(1), "token=" + good, "token" + good, "token=t&state=" + older,
                     "token=&token=t" + good, "token=t&state=x" + good, "token=a%0d%0ab" + good,
                     "token=" + QString(10'000, 't') + good, "token=t&state=", "TOKEN=t" + good}) {
        EXPECT_FALSE(account->handleCallback(QUrl("zivra://auth?" + query))) << query.toStdString();
        EXPECT_EQ(account->lastError(),
                  "That sign-in link wasn't started from this Mac. Try connecting again.");
    }
    const QUrl link("zivra://auth?%74oken=1|%C3%A9%2B+&token=u&more" + good + "&state=x");
    EXPECT_TRUE(account->handleCallback(link));
    EXPECT_EQ(account->token(), QString("1|é++"));
    EXPECT_EQ(secrets.secret, "1|é++");
    settleUntil([this] { return account->userName() == "Ada"; });
    EXPECT_EQ(account->userEmail(), "ada@zivra.example");
    EXPECT_FALSE(account->handleCallback(link)) << "a second time";
}

TEST_F(CloudAccountTest, KnowsTheUserFromStartToStartUntilTheSessionExpires)
{
    secrets.secret = "t";
    started();
    settleUntil([this] { return defaults.value("cloudUserName") == "Ada"; });
    account->setAutoUpload(false);
    defaults.setValue("cloudActivityNotifications", "no");

    answer("", 500, "{}");
    EXPECT_EQ(started().userName(), "Ada");
    EXPECT_FALSE(account->autoUpload());
    EXPECT_TRUE(account->activityNotifications());
    settleUntil([this] { return !account->lastError().isEmpty(); });
    for (const std::string body : {"nonsense", "[1]", "{\"name\":"}) {
        answer("", 200, body);
        await(account->refreshUser());
        EXPECT_FALSE(account->lastError().isEmpty()) << body;
        EXPECT_EQ(account->userName(), "Ada");
    }
    answer("", 200, R"({"name":3,"email":[]})");
    await(account->refreshUser());
    EXPECT_EQ(account->userName() + account->userEmail() + account->lastError(), "");
    defaults.setValue("cloudUserName", "Ada");
    answer("", 401, "{}");
    started();
    settleUntil([this] { return !account->isConnected(); });
    EXPECT_EQ(account->lastError(), "Your session expired. Connect your account again.");
    EXPECT_EQ(secrets.secret, std::nullopt);
    EXPECT_FALSE(defaults.values.contains("cloudUserName"));
}

TEST_F(CloudAccountTest, GoesByTheNewestTokenWhateverTheVaultDoes)
{
    secrets.secret = "old";
    secrets.reading.held = true;
    started();
    const auto waiting = account->ready();
    alerts.answer = {0, " new\r\n"};
    account->promptForToken();
    settle();
    EXPECT_EQ(alerts.shown.at(0).informativeText,
              "Create one on " + server.url() + " under Settings › Desktop app.");
    EXPECT_FALSE(waiting.isReady());
    secrets.reading.release();
    settleUntil([&] { return waiting.isReady(); });
    EXPECT_EQ(account->token(), QString("new"));
    EXPECT_EQ(secrets.secret, "new");

    // What the old token has expired with does not reach the new one.
    answer("", 401, "{}", "new", 300);
    const auto late = account->refreshUser();
    account->useManualToken(" \n");
    account->useManualToken("newest");
    settleUntil([&] { return late.isReady(); });
    EXPECT_EQ(account->token(), QString("newest"));

    // A vault that refuses: signed in for this run, and not signed out by it.
    secrets.reading.held = secrets.available = false;
    account->useManualToken("unstored");
    EXPECT_TRUE(account->isConnected());
    EXPECT_FALSE(started().isConnected());
    EXPECT_EQ(account->userName(), "Ada");
    secrets.available = true;
    await(account->ready());
    EXPECT_EQ(account->token(), QString("newest")) << "asked again";
    secrets.secret = "\xff";
    EXPECT_FALSE(started().isConnected());
    for (const auto &[key, value] : defaults.values) {
        EXPECT_FALSE(value.toString().contains("new")) << key.toStdString();
    }
}

} // namespace zivra::test
