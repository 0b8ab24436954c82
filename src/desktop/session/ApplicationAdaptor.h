#pragma once

#include <QDBusAbstractAdaptor>
#include <QStringList>
#include <QVariantMap>

namespace zivra::desktop {

class SingleInstance;

/// `org.freedesktop.Application` of the primary instance, for the Qt D-Bus dispatcher. Each call is put
/// into the event loop, so that the caller has its reply before the work starts.
class ApplicationAdaptor final : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    explicit ApplicationAdaptor(SingleInstance *instance);

public Q_SLOTS:
    // The names are the interface's own.
    void Activate(const QVariantMap &platformData);
    void Open(const QStringList &uris, const QVariantMap &platformData);
    /// Our desktop entry has no actions of its own: any of them brings the program in front.
    void ActivateAction(const QString &name, const QVariantList &parameter, const QVariantMap &platformData);

private:
    SingleInstance *m_instance;
};

} // namespace zivra::desktop
