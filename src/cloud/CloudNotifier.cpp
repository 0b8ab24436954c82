#include "cloud/CloudNotifier.h"

#include "cloud/CloudAPI.h"

#include <QPointer>
#include <QUrlQuery>

#include <chrono>

namespace zivra {

namespace {

constexpr std::chrono::seconds kPollInterval{30};

const QString kCursorKey = QStringLiteral("cloudNotificationsSince");

std::optional<QString> cursor(const UserDefaults &defaults)
{
    const QJsonValue stored = defaults.value(kCursorKey);
    return stored.isString() ? std::optional(stored.toString()) : std::nullopt;
}

} // namespace

CloudNotifier::CloudNotifier(CloudAccount &account, UserDefaults &defaults, NotificationCenter &notifications,
                             Workspace &workspace, QObject *parent)
    : QObject(parent),
      m_account(account),
      m_defaults(defaults),
      m_notifications(notifications),
      m_workspace(workspace)
{
    m_notifications.setActivationHandler([this](const QUrl &url) { m_workspace.open(url); });
    m_timer.setInterval(kPollInterval); // coarse: it may share the wake-up of another timer
    connect(&m_timer, &QTimer::timeout, this, &CloudNotifier::poll);
    connect(&m_account, &CloudAccount::tokenChanged, this, &CloudNotifier::startOver);
}

CloudNotifier::~CloudNotifier()
{
    m_notifications.setActivationHandler(nullptr);
}

void CloudNotifier::start()
{
    m_notifications.requestAuthorization();
    m_timer.start();
    pollWhenReady();
}

QCoro::Task<> CloudNotifier::pollWhenReady()
{
    const QPointer<CloudNotifier> self(this);
    co_await m_account.ready();
    if (self) {
        poll();
    }
}

void CloudNotifier::startOver()
{
    m_defaults.removeValue(kCursorKey);
    poll();
}

void CloudNotifier::poll()
{
    if (!m_polling && m_account.activityNotifications() && m_account.api()) {
        m_polling = true;
        runPoll();
    }
}

QCoro::Task<> CloudNotifier::runPoll()
{
    const QPointer<CloudNotifier> self(this);
    const CloudAPI api = m_account.api().value();
    auto request = api.request(QStringLiteral("api/notifications"), "GET");
    if (const auto since = cursor(m_defaults)) {
        QUrl url = request.http.url();
        url.setQuery(QStringLiteral("since=") + QString::fromLatin1(QUrl::toPercentEncoding(*since)));
        request.http.setUrl(url);
    }
    std::optional<ActivityFeed> feed;
    try {
        auto body = co_await api.send(request);
        feed = readActivityFeed(body);
    } catch (const std::exception &) {
        // The next poll may do better.
    }
    if (!self) {
        co_return;
    }
    m_polling = false;
    if (m_account.token() != api.token) {
        poll(); // the answer was for an account that is no longer the user's
    } else if (feed) {
        take(*feed);
    }
}

void CloudNotifier::take(const ActivityFeed &feed)
{
    if (!cursor(m_defaults)) {
        // The first answer: what was before the user connected is no news.
        if (feed.serverTime) {
            m_defaults.setValue(kCursorKey, *feed.serverTime);
        }
        return;
    }
    for (const Activity &activity : feed.activities) {
        const QString &id = activity.notification.identifier;
        if (m_shownIDs.contains(id)) {
            continue;
        }
        m_shownIDs.insert(id);
        m_notifications.show(activity.notification);
        if (activity.createdAt) {
            m_defaults.setValue(kCursorKey, *activity.createdAt);
        }
    }
}

} // namespace zivra
