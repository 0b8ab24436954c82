#include "cloud/CloudAccount.h"

#include "support/CloudServer.h"
#include "support/PrintQt.h"
#include "support/fakes/Await.h"
#include "support/fakes/FakeCloudDesktop.h"
#include "support/fakes/FakeDesktop.h"
#include "support/fakes/FakeUserDefaults.h"

#include <QUrlQuery>

#include <gtest/gtest.h>

namespace zivra::test {

namespace {

struct CloudAccountTest : testing::Test {
    CloudAccountTest() { defaults.setValue("cloudServer", server.url()); }

    /// The account of another start of the program.
    CloudAccount &started()
    {
        account = std::make_unique<CloudAccount>(
            CloudAccountServices{defaults, secrets, workspace, alerts, "A & B+"});
        changes = 0;
        QObject::connect(account.get(), &CloudAccount::tokenChanged, [this] { ++changes; });
        return *account;
    }
    /// The state of the page that the sign-in opens.
    QString signIn()
    {
        account->connect();
        return QUrlQuery(workspace.opened.last()).queryItemValue("state");
    }
    void answer(int status, const std::string &body, const std::string &token = {}, int delay = 0)
    {
        server.setFault([=](const CloudServer::Request &request) {
            const bool concerned = request.headers.at("Authorization").ends_with(token);
            return concerned ? std::optional(CloudServer::Fault{status, body, {}, false, delay})
                             : std::nullopt;
        });
    }

    CloudServer server;
    FakeUserDefaults defaults;
    FakeSecretStore secrets;
    FakeWorkspace workspace;
    FakeAlerts alerts;
    std::unique_ptr<CloudAccount> account;
    int changes = 0;
};

const QString refused = "That sign-in link wasn't started from this Mac. Try connecting again.";
const QString expired = "Your session expired. Connect your account again.";

} // namespace

TEST_F(CloudAccountTest, TalksToUsableServersOnly)
{
    defaults.removeValue("cloudServer");
    EXPECT_EQ(started().normalizedServer(), std::nullopt) << "a build without an operator";
    EXPECT_FALSE(account->serverURL().isEmpty());
    const std::pair<QString, QString> cases[] = {{"  https://a.b/c//\n", "https://a.b/c"},
                                                 {"http://[::1]:80/", "http://[::1]:80"},
                                                 {"ftp://a.b", {}},
                                                 {"a.b", {}},
                                                 {"https://", {}},
                                                 {"https://a b", {}},
                                                 {"", {}},
                                                 {"https://cloud.zivra.example.", {}}};
    for (const auto &[typed, url] : cases) {
        account->setServerURL(typed);
        EXPECT_EQ(account->normalizedServer().value_or(QUrl()), QUrl(url)) << typed.toStdString();
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
        EXPECT_EQ(account->lastError(), refused);
    }
    EXPECT_EQ(changes, 0);
    const QUrl link("zivra://auth?%74oken=1|%C3%A9%2B+&token=u&more" + good + "&state=x");
    EXPECT_TRUE(account->handleCallback(link));
    EXPECT_EQ(account->token(), QString("1|é++"));
    EXPECT_EQ(secrets.secret, "1|é++");
    EXPECT_EQ(account->lastError(), "");
    settleUntil([this] { return account->userName() == "Ada"; });
    EXPECT_EQ(account->userEmail(), "ada@zivra.example");
    EXPECT_FALSE(account->handleCallback(link)) << "a second time";
    EXPECT_TRUE(account->isConnected());
}

TEST_F(CloudAccountTest, KnowsTheUserFromStartToStartUntilTheSessionExpires)
{
    secrets.secret = "t";
    started();
    EXPECT_TRUE(account->isConnected());
    settleUntil([this] { return defaults.value("cloudUserName") == "Ada"; });
    account->setAutoUpload(false);
    defaults.setValue("cloudActivityNotifications", "no");

    answer(500, "{}");
    EXPECT_EQ(started().userName(), "Ada");
    EXPECT_FALSE(account->autoUpload());
    EXPECT_TRUE(account->activityNotifications());
    settleUntil([this] { return !account->lastError().isEmpty(); });
    EXPECT_TRUE(account->isConnected());
    for (const std::string body : {"nonsense", "[1]", "{\"name\":"}) {
        answer(200, body);
        await(account->refreshUser());
        EXPECT_FALSE(account->lastError().isEmpty()) << body;
        EXPECT_EQ(account->userName(), "Ada");
    }
    answer(200, R"({"name":3,"email":[]})");
    await(account->refreshUser());
    EXPECT_EQ(account->userName() + account->userEmail() + account->lastError(), "");
    EXPECT_EQ(changes, 0) << "what the vault says is no change";

    defaults.setValue("cloudUserName", "Ada");
    answer(401, "{}");
    started();
    settleUntil([this] { return !account->isConnected(); });
    EXPECT_EQ(account->lastError(), expired);
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(secrets.secret, std::nullopt);
    EXPECT_FALSE(defaults.values.contains("cloudUserName"));
}

TEST_F(CloudAccountTest, GoesByTheNewestTokenWhateverTheVaultDoes)
{
    secrets.secret = "old";
    secrets.reading.held = true;
    started();
    const auto waiting = std::make_shared<TaskOutcome<void>>();
    const auto following = follow(account->ready(), waiting);
    alerts.answer = {0, " new\r\n"};
    account->promptForToken();
    settle();
    EXPECT_EQ(alerts.shown.at(0).informativeText,
              "Create one on " + server.url() + " under Settings › Desktop app.");
    EXPECT_FALSE(waiting->value);
    secrets.reading.release();
    settleUntil([&] { return waiting->value.has_value(); });
    EXPECT_EQ(account->token(), QString("new"));
    EXPECT_EQ(secrets.secret, "new");

    // What the old token has expired with does not reach the new one.
    answer(401, "{}", "new", 300);
    const auto late = std::make_shared<TaskOutcome<void>>();
    const auto refreshing = follow(account->refreshUser(), late);
    account->useManualToken(" \n");
    account->useManualToken("newest");
    settleUntil([&] { return late->value.has_value(); });
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
