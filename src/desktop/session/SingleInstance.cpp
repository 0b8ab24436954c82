#include "desktop/session/SingleInstance.h"

#include "desktop/session/ApplicationAdaptor.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>

namespace zivra::desktop {

namespace {

constexpr auto replyTimeout = 2000; // milliseconds

const auto serviceName = QStringLiteral("io.quillbeck.zivra");
const auto objectPath = QStringLiteral("/io/quillbeck/zivra");
const auto interfaceName = QStringLiteral("org.freedesktop.Application");

} // namespace

SingleInstance::SingleInstance(QDBusConnection bus)
    : m_bus(std::move(bus)),
      m_adaptor(std::make_unique<ApplicationAdaptor>(this))
{
}

SingleInstance::~SingleInstance()
{
    if (m_isPrimary) {
        m_bus.unregisterService(serviceName);
        m_bus.unregisterObject(objectPath);
    }
}

SingleInstance::Role SingleInstance::claim()
{
    // The object comes before the name: whoever sees the name may call at once.
    if (!m_bus.isConnected() || !m_bus.registerObject(objectPath, this, QDBusConnection::ExportAdaptors)) {
        return Role::NoBus;
    }
    const QDBusReply<QDBusConnectionInterface::RegisterServiceReply> reply =
        m_bus.interface()->registerService(serviceName);
    m_isPrimary = reply.isValid() && reply.value() == QDBusConnectionInterface::ServiceRegistered;
    if (m_isPrimary) {
        return Role::Primary;
    }
    m_bus.unregisterObject(objectPath);
    return reply.isValid() ? Role::Secondary : Role::NoBus;
}

bool SingleInstance::handOver(const QList<QUrl> &urls)
{
    const auto method = urls.isEmpty() ? QStringLiteral("Activate") : QStringLiteral("Open");
    auto call = QDBusMessage::createMethodCall(serviceName, objectPath, interfaceName, method);
    if (!urls.isEmpty()) {
        call << QUrl::toStringList(urls, QUrl::FullyEncoded);
    }
    call << QVariantMap();
    call.setAutoStartService(false);
    return m_bus.call(call, QDBus::Block, replyTimeout).type() == QDBusMessage::ReplyMessage;
}

void SingleInstance::activate()
{
    if (m_activate) {
        m_activate();
    }
}

void SingleInstance::open(const QList<QUrl> &urls)
{
    if (urls.isEmpty()) {
        activate();
    } else if (m_open) {
        m_open(urls);
    }
}

} // namespace zivra::desktop
