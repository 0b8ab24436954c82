#pragma once

#include "desktop/x11/KeyboardModifiers.h"
#include "desktop/x11/XcbConnection.h"
#include "platform/HotKeyService.h"

#include <QSocketNotifier>

#include <map>
#include <set>

namespace zivra::desktop {

/// Hot keys as passive grabs on the root window, whatever the lock keys' state.
///
/// Key codes are places on the keyboard, whatever the layout prints on them; combinations follow when the
/// layout moves a modifier. A combination that this service has already given out is taken as well. When the
/// server goes away, no key comes any more and nothing else happens.
class X11HotKeys final : public HotKeyService {
public:
    /// Connects to a display such as ":0"; empty stands for $DISPLAY. Throws `PlatformError`. Needs the main
    /// thread's event loop.
    explicit X11HotKeys(const QByteArray &displayName = {});
    X11HotKeys(const X11HotKeys &) = delete;
    X11HotKeys &operator=(const X11HotKeys &) = delete;

    [[nodiscard]] std::optional<Reference> registerHotKey(std::uint32_t keyCode, std::uint32_t modifiers,
                                                          std::uint32_t id) override;
    void unregisterHotKey(Reference reference) override;
    void setPressHandler(std::function<void(std::uint32_t id)> handler) override;

private:
    struct HotKey {
        xcb_keycode_t key;
        std::uint32_t modifiers; ///< bits of `HotKeyService`
        std::uint32_t id;
    };

    /// All or nothing.
    bool grab(const HotKey &hotKey) const;
    void release(const HotKey &hotKey) const;
    void followLayout();

    void useKeyboardExtension();
    void readEvents();
    void handle(const xcb_generic_event_t &event);
    void handlePress(const xcb_key_press_event_t &press);
    void readEventsSoon();

    XcbConnection m_connection;
    KeyboardModifiers m_modifiers;
    std::map<Reference, HotKey> m_hotKeys;
    std::set<xcb_keycode_t> m_held; ///< keys whose release has not come yet
    std::function<void(std::uint32_t id)> m_onPress;
    Reference m_lastReference = 0;
    std::uint8_t m_layoutEvent = XCB_MAPPING_NOTIFY; ///< what tells of a new layout
    bool m_hasNewLayout = false;
    QSocketNotifier m_notifier; ///< last: goes before what its events use
};

} // namespace zivra::desktop
