#pragma once

#include "platform/NotificationCenter.h"

#include <QCoroTask>
#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QHash>
#include <QObject>
#include <QStringList>

#include <deque>

namespace zivra::desktop {

/// Notifications by the session's notification service (freedesktop.org, "Desktop Notifications", 1.2). Main
/// thread only; never waits for the service, which the bus may start.
///
/// One notification is sent at a time, in the order of the calls. The service knows each by a number, which
/// holds until it says that the notification is gone or until the service itself goes.
class DBusNotificationCenter final : public QObject, public NotificationCenter {
    Q_OBJECT

public:
    explicit DBusNotificationCenter(QDBusConnection bus = QDBusConnection::sessionBus());

    /// The service itself keeps who may notify.
    void requestAuthorization() override {}
    void show(const Notification &notification) override;
    void setActivationHandler(std::function<void(const QUrl &url)> handler) override;

private Q_SLOTS:
    void actionInvoked(uint number, const QString &action);
    void notificationClosed(uint number, uint reason);

private:
    QCoro::Task<> sendWaiting();

    QDBusConnection m_bus;
    QDBusServiceWatcher m_watcher;
    std::function<void(const QUrl &url)> m_activated;
    std::deque<Notification> m_waiting;
    bool m_sending = false;
    QHash<uint, Notification> m_shown; ///< by the service's number
};

} // namespace zivra::desktop
