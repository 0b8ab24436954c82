#include "updates/UpdateChecker.h"

#include "cloud/CloudAPI.h"
#include "cloud/CloudError.h"
#include "cloud/ExampleDomain.h"
#include "updates/UpdateFeed.h"

#include <QCoroNetworkReply>
#include <QDateTime>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QPointer>

#include <chrono>
#include <memory>
#include <utility>

namespace zivra {

namespace {

using Kind = UpdateState::Kind;

constexpr std::chrono::seconds kRequestTimeout{60};
constexpr qint64 kSecondsBetweenChecks = 86'400;
constexpr int kHttpOk = 200;

const QString kLastCheckKey = QStringLiteral("lastUpdateCheck");

bool wasCheckedToday(const QJsonValue &stored, const QDateTime &now)
{
    const auto last = QDateTime::fromString(stored.toString(), Qt::ISODateWithMs);
    const qint64 elapsed = last.isValid() ? last.secsTo(now) : kSecondsBetweenChecks;
    return elapsed >= 0 && elapsed < kSecondsBetweenChecks;
}

UpdateState upToDate()
{
    return {.kind = Kind::UpToDate, .version = {}, .download = {}, .error = {}};
}

UpdateState failed(const QString &text)
{
    return {.kind = Kind::Failed, .version = {}, .download = {}, .error = text};
}

/// What the feed's reply says to one who runs that version. Throws `JsonError`.
UpdateState outcome(QNetworkReply &reply, const QString &currentVersion)
{
    const QVariant status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute);
    if (status.isValid() && status.toInt() != kHttpOk) {
        return upToDate();
    }
    if (reply.error() != QNetworkReply::NoError) {
        return failed(reply.errorString());
    }
    const auto published = readUpdateFeed(reply.readAll());
    if (!published || !isNewer(published->version, currentVersion)) {
        return upToDate();
    }
    return {
        .kind = Kind::Available, .version = published->version, .download = published->download, .error = {}};
}

} // namespace

QUrl UpdateChecker::standardFeed()
{
    return QUrl(QStringLiteral(ZIVRA_UPDATE_FEED));
}

UpdateChecker::UpdateChecker(QUrl feed, const QString &currentVersion, UserDefaults &defaults,
                             NotificationCenter &notifications, QObject *parent)
    : QObject(parent),
      m_feed(std::move(feed)),
      m_currentVersion(currentVersion.isEmpty() ? QStringLiteral("1.0") : currentVersion),
      m_defaults(defaults),
      m_notifications(notifications)
{
}

QCoro::Task<> UpdateChecker::check()
{
    const QPointer<UpdateChecker> self(this);
    if (isInExampleDomain(m_feed)) {
        setState(upToDate());
        co_return;
    }
    setState({.kind = Kind::Checking, .version = {}, .download = {}, .error = {}});
    QNetworkRequest request(m_feed);
    request.setRawHeader("Accept", "application/json");
    request.setTransferTimeout(static_cast<int>(std::chrono::milliseconds(kRequestTimeout).count()));
    const std::unique_ptr<QNetworkReply, QScopedPointerDeleteLater> reply(sharedNetwork().get(request));
    co_await reply.get();
    if (!self) {
        co_return;
    }
    try {
        setState(outcome(*reply, m_currentVersion));
    } catch (const std::exception &error) {
        setState(failed(userText(error)));
    }
}

void UpdateChecker::checkDailyInBackground()
{
    const QDateTime now = QDateTime::currentDateTimeUtc();
    if (!wasCheckedToday(m_defaults.value(kLastCheckKey), now)) {
        m_defaults.setValue(kLastCheckKey, now.toString(Qt::ISODateWithMs));
        checkAndNotify();
    }
}

QCoro::Task<> UpdateChecker::checkAndNotify()
{
    const QPointer<UpdateChecker> self(this);
    co_await check();
    if (self && m_state.kind == Kind::Available) {
        m_notifications.show({.identifier = QStringLiteral("update-") + m_state.version,
                              .title = QStringLiteral("Zivra %1 is available").arg(m_state.version),
                              .body = QStringLiteral("Click to download the update."),
                              .sound = false,
                              .url = m_state.download});
    }
}

void UpdateChecker::setState(const UpdateState &state)
{
    if (!(std::exchange(m_state, state) == state)) {
        Q_EMIT stateChanged();
    }
}

} // namespace zivra
