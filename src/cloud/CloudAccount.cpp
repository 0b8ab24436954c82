#include "cloud/CloudAccount.h"

#include "cloud/CloudError.h"
#include "cloud/ExampleDomain.h"
#include "cloud/SignInLink.h"

#include <QCoroFuture>
#include <QJsonObject>
#include <QPointer>

#include <chrono>
#include <exception>
#include <utility>

namespace zivra {

namespace {

constexpr std::chrono::minutes kVaultPatience{1};
constexpr int kUnauthorized = 401;

// Of the vault's entry.
const QString kTokenAccount = QStringLiteral("cloud-token");

// Of the user defaults.
const QString kServerKey = QStringLiteral("cloudServer");
const QString kAutoUploadKey = QStringLiteral("cloudAutoUpload");
const QString kActivityKey = QStringLiteral("cloudActivityNotifications");
const QString kUserNameKey = QStringLiteral("cloudUserName");

} // namespace

CloudAccount::CloudAccount(const CloudAccountServices &services, QObject *parent)
    : QObject(parent),
      m_services(services),
      m_keychain(services.secrets),
      m_serverURL(services.defaults.value(kServerKey).toString(QStringLiteral(ZIVRA_CLOUD_SERVER))),
      m_autoUpload(services.defaults.value(kAutoUploadKey).toBool(true)),
      m_activityNotifications(services.defaults.value(kActivityKey).toBool(true)),
      m_userName(services.defaults.value(kUserNameKey).toString())
{
    m_patience.setSingleShot(true);
    m_patience.setInterval(kVaultPatience);
    QObject::connect(&m_patience, &QTimer::timeout, this, [this] { m_answered->finish(); });
    restoreToken();
}

CloudAccount::~CloudAccount() = default;

void CloudAccount::setServerURL(const QString &url)
{
    m_services.defaults.setValue(kServerKey, url);
    if (std::exchange(m_serverURL, url) != url) {
        Q_EMIT serverURLChanged();
    }
}

void CloudAccount::setAutoUpload(bool automatic)
{
    m_services.defaults.setValue(kAutoUploadKey, automatic);
    if (std::exchange(m_autoUpload, automatic) != automatic) {
        Q_EMIT autoUploadChanged();
    }
}

void CloudAccount::setActivityNotifications(bool wanted)
{
    m_services.defaults.setValue(kActivityKey, wanted);
    if (std::exchange(m_activityNotifications, wanted) != wanted) {
        Q_EMIT activityNotificationsChanged();
    }
}

std::optional<QUrl> CloudAccount::normalizedServer() const
{
    QString text = m_serverURL.trimmed();
    while (text.endsWith(QLatin1Char('/'))) {
        text.chop(1);
    }
    const QUrl url(text, QUrl::StrictMode);
    const bool web = url.scheme() == QLatin1String("https") || url.scheme() == QLatin1String("http");
    return web && !url.host().isEmpty() && !isInExampleDomain(url) ? std::optional(url) : std::nullopt;
}

std::optional<CloudAPI> CloudAccount::api() const
{
    const auto server = normalizedServer();
    return m_token && server ? std::optional(CloudAPI{*server, *m_token}) : std::nullopt;
}

QCoro::Task<> CloudAccount::ready()
{
    if (m_vault == Vault::Unavailable && !m_token) {
        restoreToken();
    }
    QFuture<void> answered = m_answered->future();
    co_await answered;
}

QCoro::Task<> CloudAccount::restoreToken()
{
    const QPointer<CloudAccount> self(this);
    m_vault = Vault::Asked;
    m_answered.emplace();
    m_answered->start();
    m_patience.start();
    const int changesBefore = m_tokenChanges;
    auto answer = co_await m_keychain.read(kTokenAccount);
    if (!self) {
        co_return;
    }
    m_vault = answer.available ? Vault::Answered : Vault::Unavailable;
    // What the user has done meanwhile is newer than what the vault had.
    if (answer.value && !answer.value->isEmpty() && m_tokenChanges == changesBefore) {
        m_token = std::move(answer.value);
        refreshUser();
        Q_EMIT connectedChanged();
    }
    m_patience.stop();
    m_answered->finish();
}

void CloudAccount::connect()
{
    const auto server = normalizedServer();
    if (!server) {
        setLastError(userText(CloudError(CloudError::invalidServer)));
        return;
    }
    m_pendingState = randomSignInState();
    const QString computer = m_services.computerName;
    const QUrl page =
        signInPage(*server, m_pendingState, computer.isEmpty() ? QStringLiteral("Mac") : computer);
    if (page.isValid()) {
        setLastError({});
        m_services.workspace.open(page);
    }
}

bool CloudAccount::handleCallback(const QUrl &url)
{
    const auto token = tokenOfCallback(url, m_pendingState);
    if (!token) {
        setLastError(QStringLiteral("That sign-in link wasn't started from this Mac. Try connecting again."));
        return false;
    }
    m_pendingState.clear();
    save(*token);
    return true;
}

void CloudAccount::promptForToken()
{
    if (!std::exchange(m_prompting, true)) {
        runTokenPrompt();
    }
}

QCoro::Task<> CloudAccount::runTokenPrompt()
{
    const QPointer<CloudAccount> self(this);
    const Alert alert{
        QStringLiteral("Paste an API token"),
        QStringLiteral("Create one on %1 under Settings › Desktop app.").arg(m_serverURL),
        Alert::Style::Informational,
        {QStringLiteral("Connect"), QStringLiteral("Cancel")},
        QStringLiteral("1|abc…"),
    };
    const AlertAnswer answer = co_await m_services.alerts.run(alert);
    if (!self) {
        co_return;
    }
    m_prompting = false;
    if (answer.button == 0) {
        useManualToken(answer.text);
    }
}

void CloudAccount::useManualToken(const QString &token)
{
    const QString pasted = pastedToken(token);
    if (!pasted.isEmpty()) {
        save(pasted);
    }
}

QCoro::Task<> CloudAccount::refreshUser()
{
    const QPointer<CloudAccount> self(this);
    const auto server = api();
    if (!server) {
        co_return;
    }
    QJsonObject user;
    std::optional<QString> failure;
    bool expired = false;
    try {
        auto body = co_await server->send(server->request(QStringLiteral("api/user"), "GET"));
        user = jsonObject(body);
    } catch (const CloudError &error) {
        failure = userText(error);
        expired = error.status() == kUnauthorized;
    } catch (const std::exception &error) {
        failure = userText(error);
    }
    // Who has signed out meanwhile has no name any more, and a newer token has not expired with the one that
    // was asked with.
    if (!self || !m_token || (expired && *m_token != server->token)) {
        co_return;
    }
    if (expired) {
        disconnect();
    } else if (!failure) {
        setUser(user[QLatin1String("name")].toString(), user[QLatin1String("email")].toString());
    }
    setLastError(failure.value_or(QString()));
}

void CloudAccount::disconnect()
{
    m_keychain.remove(kTokenAccount);
    setUser({}, {});
    setToken(std::nullopt);
}

void CloudAccount::save(const QString &token)
{
    m_keychain.write(token, kTokenAccount);
    setToken(token);
    setLastError({});
    refreshUser();
}

void CloudAccount::setToken(const std::optional<QString> &token)
{
    ++m_tokenChanges;
    const auto before = std::exchange(m_token, token);
    if (before.has_value() != token.has_value()) {
        Q_EMIT connectedChanged();
    }
    if (before != token) {
        Q_EMIT tokenChanged();
    }
}

void CloudAccount::setUser(const QString &name, const QString &email)
{
    if (name.isEmpty()) {
        m_services.defaults.removeValue(kUserNameKey);
    } else {
        m_services.defaults.setValue(kUserNameKey, name);
    }
    if (std::exchange(m_userName, name) != name) {
        Q_EMIT userNameChanged();
    }
    if (std::exchange(m_userEmail, email) != email) {
        Q_EMIT userEmailChanged();
    }
}

void CloudAccount::setLastError(const QString &text)
{
    if (std::exchange(m_lastError, text) != text) {
        Q_EMIT lastErrorChanged();
    }
}

} // namespace zivra
