#pragma once

#include "cloud/CloudAPI.h"
#include "cloud/Keychain.h"
#include "platform/AlertPresenter.h"
#include "platform/UserDefaults.h"
#include "platform/Workspace.h"

#include <QCoroTask>
#include <QObject>
#include <QPromise>
#include <QString>
#include <QTimer>
#include <QUrl>

#include <optional>

namespace zivra {

/// What the account asks of the desktop; all of it outlives the account.
struct CloudAccountServices {
    UserDefaults &defaults;
    SecretStore &secrets;
    Workspace &workspace;
    AlertPresenter &alerts;
    QString computerName; ///< as the user knows it; may be empty
};

/// Whether the user is connected to a cloud server, to which one, and under which token. Main thread only.
///
/// The settings and the user's name are kept in the user defaults, written on each change; the token is kept
/// in the vault alone. The vault is asked once at construction and answers later: until then there is no
/// token. A vault that could not be asked has signed nobody out: it is asked again when a caller waits for
/// `ready()`. Nothing here ever throws; failures are told in `lastError`.
///
/// `connect()` and `disconnect()` hide those of QObject: write `QObject::connect(...)` for signals.
class CloudAccount : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString serverURL READ serverURL WRITE setServerURL NOTIFY serverURLChanged)
    Q_PROPERTY(bool autoUpload READ autoUpload WRITE setAutoUpload NOTIFY autoUploadChanged)
    Q_PROPERTY(bool activityNotifications READ activityNotifications WRITE setActivityNotifications NOTIFY
                   activityNotificationsChanged)
    Q_PROPERTY(QString userName READ userName NOTIFY userNameChanged)
    Q_PROPERTY(QString userEmail READ userEmail NOTIFY userEmailChanged)
    Q_PROPERTY(bool connected READ isConnected NOTIFY connectedChanged)
    Q_PROPERTY(QString lastError READ lastError NOTIFY lastErrorChanged)

public:
    explicit CloudAccount(const CloudAccountServices &services, QObject *parent = nullptr);
    ~CloudAccount() override;
    Q_DISABLE_COPY_MOVE(CloudAccount)

    /// The server's address as the user typed it; at first the one that the build names.
    [[nodiscard]] const QString &serverURL() const { return m_serverURL; }
    /// The token and the user stay as they are.
    void setServerURL(const QString &url);
    /// Finished recordings are uploaded without being asked for.
    [[nodiscard]] bool autoUpload() const { return m_autoUpload; }
    void setAutoUpload(bool automatic);
    /// The user wants to be told of views, comments and reactions.
    [[nodiscard]] bool activityNotifications() const { return m_activityNotifications; }
    void setActivityNotifications(bool wanted);
    /// Empty when unknown. The name is known from the last run on, the address after a fetch in this one.
    [[nodiscard]] const QString &userName() const { return m_userName; }
    [[nodiscard]] const QString &userEmail() const { return m_userEmail; }
    /// The text of the last failure; empty when there is none.
    [[nodiscard]] const QString &lastError() const { return m_lastError; }
    /// Absent when nobody is signed in. Not for views, logs, arguments, files or error texts.
    [[nodiscard]] const std::optional<QString> &token() const { return m_token; }
    [[nodiscard]] bool isConnected() const { return m_token.has_value(); }

    /// The server's address without blanks around it or slashes at its end. Absent unless it is an http or
    /// https address with a host. Absent as well for a host in a domain that is reserved for examples, so
    /// that a build without an operator's address contacts nobody.
    [[nodiscard]] std::optional<QUrl> normalizedServer() const;
    /// To talk to the server with the token; absent without a token or a usable address.
    [[nodiscard]] std::optional<CloudAPI> api() const;

    /// Waits until the vault has answered, a minute at most: then it counts as unavailable, though an answer
    /// that comes later still counts, unless the user has signed in or out meanwhile.
    QCoro::Task<> ready();

    /// Starts the sign-in in the user's browser. A link of an earlier start no longer works.
    Q_INVOKABLE void connect();
    /// Finishes it with the `zivra://auth` URL that the browser hands back; whether a token was accepted.
    bool handleCallback(const QUrl &url);
    /// Asks the user for a token in a dialog; one at a time.
    Q_INVOKABLE void promptForToken();
    /// Signs in with a token that the user has pasted; a blank one is ignored.
    void useManualToken(const QString &token);
    /// Asks the server who the user is. A token that the server no longer takes ends the connection.
    QCoro::Task<> refreshUser();
    /// Signs out here; the server is not told.
    Q_INVOKABLE void disconnect();

Q_SIGNALS:
    void serverURLChanged();
    void autoUploadChanged();
    void activityNotificationsChanged();
    void userNameChanged();
    void userEmailChanged();
    void lastErrorChanged();
    /// Whether there is a token, by whatever road, the vault's answer included.
    void connectedChanged();
    /// The user has signed in, out, or in again with another token. What the vault answers is the state at
    /// the start and no such change.
    void tokenChanged();

private:
    QCoro::Task<> restoreToken();
    QCoro::Task<> runTokenPrompt();
    void save(const QString &token);
    void setToken(const std::optional<QString> &token);
    void setUser(const QString &name, const QString &email);
    void setLastError(const QString &text);

    enum class Vault { Asked, Answered, Unavailable };

    CloudAccountServices m_services;
    Keychain m_keychain;
    Vault m_vault = Vault::Asked;
    std::optional<QPromise<void>> m_answered; ///< of the vault's last question
    QTimer m_patience;                        ///< with its answer
    QString m_serverURL;
    bool m_autoUpload;
    bool m_activityNotifications;
    QString m_userName;
    QString m_userEmail;
    QString m_lastError;
    std::optional<QString> m_token;
    int m_tokenChanges = 0; ///< by the user, in this run
    QString m_pendingState; ///< of the sign-in under way in the browser; empty without one
    bool m_prompting = false;
};

} // namespace zivra
