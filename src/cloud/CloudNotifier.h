#pragma once

#include "cloud/ActivityFeed.h"
#include "cloud/CloudAccount.h"
#include "platform/NotificationCenter.h"
#include "platform/UserDefaults.h"
#include "platform/Workspace.h"

#include <QCoroTask>
#include <QObject>
#include <QSet>
#include <QTimer>

namespace zivra {

/// Tells the user who watched, commented on or reacted to a shared video: asks the server every 30 seconds
/// and shows each new activity. Main thread only; failures are silent.
///
/// The cursor is the server's time up to which the user has been told. It is kept in the user defaults, and
/// starts over when another account signs in. A click on any notification of ours opens its link.
class CloudNotifier : public QObject {
    Q_OBJECT

public:
    /// All of it outlives the notifier.
    CloudNotifier(CloudAccount &account, UserDefaults &defaults, NotificationCenter &notifications,
                  Workspace &workspace, QObject *parent = nullptr);
    ~CloudNotifier() override;
    Q_DISABLE_COPY_MOVE(CloudNotifier)

    /// Asks the user for leave to notify where the desktop wants that, and polls from now on.
    void start();

private:
    void startOver();
    QCoro::Task<> pollWhenReady();
    void poll();
    QCoro::Task<> runPoll();
    void take(const ActivityFeed &feed);

    CloudAccount &m_account;
    UserDefaults &m_defaults;
    NotificationCenter &m_notifications;
    Workspace &m_workspace;
    QTimer m_timer;
    QSet<QString> m_shownIDs; ///< in this run
    bool m_polling = false;
};

} // namespace zivra
