#include "desktop/secrets/LockedSecrets.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QMap>

namespace zivra::desktop {

namespace {

constexpr int kReplyTimeout = 2000; // milliseconds

} // namespace

bool hasLockedSecret(const QString &service, const QString &account)
{
    qDBusRegisterMetaType<QMap<QString, QString>>();
    auto search = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.secrets"), QStringLiteral("/org/freedesktop/secrets"),
        QStringLiteral("org.freedesktop.Secret.Service"), QStringLiteral("SearchItems"));
    search.setAutoStartService(false);
    // The attributes that QtKeychain gives a secret.
    const QMap<QString, QString> attributes{{QStringLiteral("server"), service},
                                            {QStringLiteral("user"), account}};
    search << QVariant::fromValue(attributes);
    const QDBusMessage reply = QDBusConnection::sessionBus().call(search, QDBus::Block, kReplyTimeout);
    // The paths of the unlocked items, then those of the locked ones.
    return reply.type() == QDBusMessage::ReplyMessage && reply.arguments().size() == 2 &&
           !qdbus_cast<QList<QDBusObjectPath>>(reply.arguments().at(1)).isEmpty();
}

} // namespace zivra::desktop
