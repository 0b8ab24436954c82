#pragma once

#include "platform/NotificationCenter.h"
#include "platform/UserDefaults.h"

#include <QCoroTask>
#include <QObject>
#include <QString>
#include <QUrl>

namespace zivra {

/// What is known of newer versions in this run.
struct UpdateState {
    Q_GADGET
    Q_PROPERTY(Kind kind MEMBER kind)
    Q_PROPERTY(QString version MEMBER version)
    Q_PROPERTY(QUrl download MEMBER download)
    Q_PROPERTY(QString error MEMBER error)

public:
    enum class Kind { Available, Failed, Idle, Checking, UpToDate };
    Q_ENUM(Kind)

    Kind kind = Kind::Idle;
    QString version; ///< of what is available
    QUrl download;   ///< of what is available, http or https
    QString error;   ///< why the check failed

    friend bool operator==(const UpdateState &, const UpdateState &) = default;
};

/// Looks for a newer version on the update feed. Main thread only; never throws.
///
/// A feed in a domain that is reserved for examples, as a build without an operator's address has it, is
/// never asked and has nothing newer.
class UpdateChecker : public QObject {
    Q_OBJECT
    Q_PROPERTY(zivra::UpdateState state READ state NOTIFY stateChanged)

public:
    /// The feed that the build names.
    [[nodiscard]] static QUrl standardFeed();

    /// The services outlive the checker. `currentVersion` is what runs here, "1.0" when empty.
    UpdateChecker(QUrl feed, const QString &currentVersion, UserDefaults &defaults,
                  NotificationCenter &notifications, QObject *parent = nullptr);

    [[nodiscard]] const UpdateState &state() const { return m_state; }
    [[nodiscard]] const QString &currentVersion() const { return m_currentVersion; }

    /// Asks the feed; the outcome is the state.
    QCoro::Task<> check();
    /// Returns at once. Checks unless such a check began less than 24 hours ago, in this run or another one,
    /// and tells the user of a newer version by a notification that leads to it.
    void checkDailyInBackground();

Q_SIGNALS:
    void stateChanged();

private:
    QCoro::Task<> checkAndNotify();
    void setState(const UpdateState &state);

    QUrl m_feed;
    QString m_currentVersion;
    UserDefaults &m_defaults;
    NotificationCenter &m_notifications;
    UpdateState m_state;
};

} // namespace zivra
