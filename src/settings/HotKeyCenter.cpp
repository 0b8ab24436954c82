#include "settings/HotKeyCenter.h"

#include <QPointer>

#include <utility>

namespace zivra {

HotKeyCenter::HotKeyCenter(HotKeyService *service) : m_service(service) {}

HotKeyCenter &HotKeyCenter::shared()
{
    static HotKeyCenter center;
    return center;
}

void HotKeyCenter::useService(HotKeyService *service)
{
    deactivateAll();
    m_service = service;
    m_installed = false;
    if (!m_registrations.empty()) {
        installHandlerIfNeeded();
    }
    if (!m_suspended) {
        activateAll();
    }
}

void HotKeyCenter::registerHotKey(const Shortcut &shortcut, std::function<void()> handler)
{
    installHandlerIfNeeded();
    const std::uint32_t id = m_nextID++;
    Registration &registration =
        m_registrations.insert_or_assign(id, Registration{shortcut, std::move(handler), std::nullopt})
            .first->second;
    if (!m_suspended) {
        activate(id, registration);
    }
}

void HotKeyCenter::unregisterAll()
{
    deactivateAll();
    m_registrations.clear();
}

void HotKeyCenter::suspend()
{
    m_suspended = true;
    deactivateAll();
}

void HotKeyCenter::resume()
{
    m_suspended = false;
    activateAll();
}

void HotKeyCenter::installHandlerIfNeeded()
{
    if (m_installed || m_service == nullptr) {
        return;
    }
    m_installed = true;
    m_service->setPressHandler([self = QPointer(this)](std::uint32_t id) {
        if (self) {
            QMetaObject::invokeMethod(
                self.data(), [self, id] { self->pressed(id); }, Qt::QueuedConnection);
        }
    });
}

void HotKeyCenter::activate(std::uint32_t id, Registration &registration)
{
    if (m_service != nullptr && !registration.reference) {
        registration.reference =
            m_service->registerHotKey(registration.shortcut.keyCode, registration.shortcut.modifiers, id);
    }
}

void HotKeyCenter::activateAll()
{
    for (auto &[id, registration] : m_registrations) {
        activate(id, registration);
    }
}

void HotKeyCenter::deactivateAll()
{
    for (auto &[id, registration] : m_registrations) {
        if (registration.reference) {
            m_service->unregisterHotKey(*std::exchange(registration.reference, std::nullopt));
        }
    }
}

void HotKeyCenter::pressed(std::uint32_t id)
{
    const auto found = m_registrations.find(id);
    if (found != m_registrations.end()) {
        // A copy: what it runs may empty the map.
        const auto handler = found->second.handler;
        handler();
    }
}

} // namespace zivra
