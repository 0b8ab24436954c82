#include "desktop/session/ApplicationAdaptor.h"

#include "desktop/session/SingleInstance.h"

namespace zivra::desktop {

ApplicationAdaptor::ApplicationAdaptor(SingleInstance *instance)
    : QDBusAbstractAdaptor(instance),
      m_instance(instance)
{
}

void ApplicationAdaptor::Activate(const QVariantMap & /*platformData*/)
{
    QMetaObject::invokeMethod(
        m_instance, [instance = m_instance] { instance->activate(); }, Qt::QueuedConnection);
}

void ApplicationAdaptor::Open(const QStringList &uris, const QVariantMap & /*platformData*/)
{
    QList<QUrl> urls;
    for (const auto &uri : uris) {
        // Tolerant: browsers leave characters of a query as they are that it should not hold.
        const QUrl url(uri);
        if (url.isValid()) {
            urls.append(url);
        }
    }
    QMetaObject::invokeMethod(
        m_instance, [instance = m_instance, urls] { instance->open(urls); }, Qt::QueuedConnection);
}

void ApplicationAdaptor::ActivateAction(const QString & /*name*/, const QVariantList & /*parameter*/,
                                        const QVariantMap &platformData)
{
    Activate(platformData);
}

} // namespace zivra::desktop
