#include "desktop/session/DBusNotificationCenter.h"

#include <QCoroDBusPendingCall>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QPointer>
#include <QVariantMap>

#include <algorithm>
#include <utility>

namespace zivra::desktop {

namespace {

const auto kServiceName = QStringLiteral("org.freedesktop.Notifications");
const auto kObjectPath = QStringLiteral("/org/freedesktop/Notifications");
const auto kDefaultAction = QStringLiteral("default"); // a click on the notification itself

constexpr uint kClosedByExpiry = 1; // it may still be in the desktop's list
constexpr int kServiceChoosesTimeout = -1;

QDBusMessage call(const QString &method)
{
    return QDBusMessage::createMethodCall(kServiceName, kObjectPath, kServiceName, method);
}

QVariantMap hintsFor(const Notification &notification)
{
    QVariantMap hints{{QStringLiteral("desktop-entry"), QStringLiteral("io.quillbeck.zivra")}};
    if (notification.sound) {
        hints.insert(QStringLiteral("sound-name"), QStringLiteral("message-new-instant"));
    } else {
        hints.insert(QStringLiteral("suppress-sound"), true);
    }
    return hints;
}

/// The call that shows it in place of number `replaced` (0: of none).
QDBusMessage notifyCall(const Notification &notification, uint replaced, const QStringList &capabilities)
{
    const bool clickable = notification.url && capabilities.contains(QStringLiteral("actions"));
    const bool markup = capabilities.contains(QStringLiteral("body-markup"));
    auto notify = call(QStringLiteral("Notify"));
    notify << QStringLiteral("Zivra") << replaced << QStringLiteral("io.quillbeck.zivra")
           << notification.title << (markup ? notification.body.toHtmlEscaped() : notification.body)
           << (clickable ? QStringList{kDefaultAction, QStringLiteral("Open")} : QStringList())
           << hintsFor(notification) << kServiceChoosesTimeout;
    return notify;
}

} // namespace

DBusNotificationCenter::DBusNotificationCenter(QDBusConnection bus)
    : m_bus(std::move(bus)),
      m_watcher(kServiceName, m_bus, QDBusServiceWatcher::WatchForUnregistration)
{
    m_bus.connect(kServiceName, kObjectPath, kServiceName, QStringLiteral("ActionInvoked"), this,
                  SLOT(actionInvoked(uint, QString)));
    m_bus.connect(kServiceName, kObjectPath, kServiceName, QStringLiteral("NotificationClosed"), this,
                  SLOT(notificationClosed(uint, uint)));
    connect(&m_watcher, &QDBusServiceWatcher::serviceUnregistered, this, [this] { m_shown.clear(); });
}

void DBusNotificationCenter::show(const Notification &notification)
{
    m_waiting.push_back(notification);
    if (!std::exchange(m_sending, true)) {
        sendWaiting();
    }
}

void DBusNotificationCenter::setActivationHandler(std::function<void(const QUrl &)> handler)
{
    m_activated = std::move(handler);
}

QCoro::Task<> DBusNotificationCenter::sendWaiting()
{
    const QPointer<DBusNotificationCenter> self(this);
    while (!m_waiting.empty()) {
        const Notification notification = std::move(m_waiting.front());
        m_waiting.pop_front();
        auto capabilities = co_await m_bus.asyncCall(call(QStringLiteral("GetCapabilities")));
        if (!self) {
            co_return;
        }
        const auto found =
            std::find_if(m_shown.keyValueBegin(), m_shown.keyValueEnd(), [&](const auto &shown) {
                return shown.second.identifier == notification.identifier;
            });
        const uint replaced = found == m_shown.keyValueEnd() ? 0 : found->first;
        auto reply = co_await m_bus.asyncCall(
            notifyCall(notification, replaced, capabilities.arguments().value(0).toStringList()));
        if (!self) {
            co_return;
        }
        if (reply.type() == QDBusMessage::ReplyMessage) {
            m_shown.remove(replaced);
            m_shown.insert(reply.arguments().value(0).toUInt(), notification);
        }
    }
    m_sending = false;
}

void DBusNotificationCenter::actionInvoked(uint number, const QString &action)
{
    const auto url = m_shown.value(number).url;
    if (url && action == kDefaultAction && m_activated) {
        m_activated(*url);
    }
}

void DBusNotificationCenter::notificationClosed(uint number, uint reason)
{
    if (reason != kClosedByExpiry) {
        m_shown.remove(number);
    }
}

} // namespace zivra::desktop
