#pragma once

#include "platform/HotKeyService.h"
#include "settings/Shortcut.h"

#include <QObject>

#include <cstdint>
#include <functional>
#include <map>
#include <optional>

namespace zivra {

/// The global hot keys that are wanted, over the desktop's service. Main thread only.
///
/// Nothing is reported when the desktop refuses a combination: the hot key then does nothing, and
/// `resume()` tries it again.
class HotKeyCenter : public QObject {
public:
    /// Without a service nothing becomes active.
    explicit HotKeyCenter(HotKeyService *service = nullptr);

    /// The one of the program. It has to be given its service, once.
    static HotKeyCenter &shared();
    /// What is registered already becomes active there. The service must outlive every later call; a null
    /// one ends the use of the one before.
    void useService(HotKeyService *service);

    /// `handler` runs at each press, from the event loop, never inside the desktop's callback.
    void registerHotKey(const Shortcut &shortcut, std::function<void()> handler);
    void unregisterAll();
    /// No hot key fires until `resume()`; all stay registered, and others may be added.
    void suspend();
    void resume();

private:
    struct Registration {
        Shortcut shortcut;
        std::function<void()> handler;
        std::optional<HotKeyService::Reference> reference; ///< absent while not active
    };

    void installHandlerIfNeeded();
    void activate(std::uint32_t id, Registration &registration);
    void activateAll();
    void deactivateAll();
    void pressed(std::uint32_t id);

    HotKeyService *m_service;
    std::map<std::uint32_t, Registration> m_registrations;
    std::uint32_t m_nextID = 1; ///< never goes back, so that a late press cannot meet another's id
    bool m_suspended = false;
    bool m_installed = false;
};

} // namespace zivra
