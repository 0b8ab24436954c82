#include "desktop/x11/X11HotKeys.h"

#include "desktop/x11/AppleKeyCodes.h"

// A field of a C structure there is called explicit.
#define explicit isExplicit // NOLINT(clang-diagnostic-keyword-macro)
#include <xcb/xkb.h>
#undef explicit

#include <algorithm>
#include <utility>

namespace zivra::desktop {

X11HotKeys::X11HotKeys(const QByteArray &displayName)
    : m_connection(displayName),
      m_modifiers(KeyboardModifiers::read(m_connection)),
      m_notifier(m_connection.fileDescriptor(), QSocketNotifier::Read)
{
    useKeyboardExtension();
    QObject::connect(&m_notifier, &QSocketNotifier::activated, &m_notifier, [this] { readEvents(); });
    readEventsSoon();
}

std::optional<HotKeyService::Reference> X11HotKeys::registerHotKey(std::uint32_t keyCode,
                                                                   std::uint32_t modifiers, std::uint32_t id)
{
    const auto key = xKeyCode(keyCode);
    if (!key) {
        return std::nullopt;
    }
    const HotKey hotKey{.key = *key, .modifiers = modifiers, .id = id};
    const bool isOurs = std::ranges::any_of(m_hotKeys, [&](const auto &known) {
        return known.second.key == hotKey.key &&
               m_modifiers.fromHotKey(known.second.modifiers) == m_modifiers.fromHotKey(modifiers);
    });
    const bool isGranted = !isOurs && grab(hotKey);
    readEventsSoon();
    if (!isGranted) {
        return std::nullopt;
    }
    m_hotKeys.emplace(++m_lastReference, hotKey);
    return m_lastReference;
}

void X11HotKeys::unregisterHotKey(Reference reference)
{
    if (const auto known = m_hotKeys.extract(reference)) {
        release(known.mapped());
        m_connection.flush();
    }
}

void X11HotKeys::setPressHandler(std::function<void(std::uint32_t id)> handler)
{
    m_onPress = std::move(handler);
}

bool X11HotKeys::grab(const HotKey &hotKey) const
{
    const auto modifiers = m_modifiers.fromHotKey(hotKey.modifiers);
    bool isGranted = true;
    for (const auto lockState : m_modifiers.lockStates()) {
        const auto request = xcb_grab_key_checked(m_connection.get(), 0, m_connection.root(),
                                                  static_cast<std::uint16_t>(modifiers | lockState),
                                                  hotKey.key, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
        isGranted = m_connection.check(request) == nullptr && isGranted;
    }
    isGranted = isGranted && m_connection.isAlive();
    if (!isGranted) {
        release(hotKey);
        m_connection.flush();
    }
    return isGranted;
}

void X11HotKeys::release(const HotKey &hotKey) const
{
    const auto modifiers = m_modifiers.fromHotKey(hotKey.modifiers);
    for (const auto lockState : m_modifiers.lockStates()) {
        xcb_ungrab_key(m_connection.get(), hotKey.key, m_connection.root(),
                       static_cast<std::uint16_t>(modifiers | lockState));
    }
}

/// Keys stay where they are, so only modifiers matter. What cannot be had with the new ones stays registered
/// and is tried again with the next.
void X11HotKeys::followLayout()
{
    const auto modifiers = KeyboardModifiers::read(m_connection);
    if (modifiers == m_modifiers) {
        return;
    }
    xcb_ungrab_key(m_connection.get(), XCB_GRAB_ANY, m_connection.root(), XCB_MOD_MASK_ANY);
    m_modifiers = modifiers;
    for (const auto &[reference, hotKey] : m_hotKeys) {
        grab(hotKey);
    }
}

/// Held keys then repeat as presses without releases between them. To a client that knows the extension the
/// server tells changes of the layout by the extension's own events alone.
void X11HotKeys::useKeyboardExtension()
{
    if (!m_connection.hasExtension(xcb_xkb_id)) {
        return;
    }
    xcb_connection_t *server = m_connection.get();
    const auto use =
        m_connection.reply(xcb_xkb_use_extension_reply,
                           xcb_xkb_use_extension(server, XCB_XKB_MAJOR_VERSION, XCB_XKB_MINOR_VERSION));
    constexpr std::uint32_t kFlag = XCB_XKB_PER_CLIENT_FLAG_DETECTABLE_AUTO_REPEAT;
    const auto flags =
        m_connection.reply(xcb_xkb_per_client_flags_reply,
                           xcb_xkb_per_client_flags(server, XCB_XKB_ID_USE_CORE_KBD, kFlag, kFlag, 0, 0, 0));
    constexpr std::uint16_t kEvents = XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY;
    constexpr std::uint16_t kMaps = XCB_XKB_MAP_PART_KEY_SYMS | XCB_XKB_MAP_PART_MODIFIER_MAP;
    xcb_xkb_select_events(server, XCB_XKB_ID_USE_CORE_KBD, kEvents, 0, kEvents, kMaps, kMaps, nullptr);
    m_layoutEvent = xcb_get_extension_data(server, &xcb_xkb_id)->first_event;
}

/// Events that came while a reply was awaited lie in the connection's queue, where the socket shows nothing.
void X11HotKeys::readEventsSoon()
{
    QMetaObject::invokeMethod(
        &m_notifier, [this] { readEvents(); }, Qt::QueuedConnection);
}

void X11HotKeys::readEvents()
{
    while (const auto event = m_connection.nextEvent()) {
        handle(*event);
    }
    if (std::exchange(m_hasNewLayout, false)) { // one change of layout comes as several events
        followLayout();
        readEventsSoon();
    }
    if (!m_connection.isAlive()) {
        m_notifier.setEnabled(false);
    }
}

void X11HotKeys::handle(const xcb_generic_event_t &event)
{
    // Events that another client has made up bear an extra bit and match none of these.
    switch (event.response_type) {
    case XCB_KEY_PRESS:
        handlePress(reinterpret_cast<const xcb_key_press_event_t &>(event));
        break;
    case XCB_KEY_RELEASE:
        m_held.erase(reinterpret_cast<const xcb_key_release_event_t &>(event).detail);
        break;
    default:
        m_hasNewLayout = m_hasNewLayout || event.response_type == m_layoutEvent;
        break;
    }
}

void X11HotKeys::handlePress(const xcb_key_press_event_t &press)
{
    if (!m_held.insert(press.detail).second) {
        return;
    }
    const auto modifiers = m_modifiers.withoutLocks(press.state);
    const auto pressed = std::ranges::find_if(m_hotKeys, [&](const auto &known) {
        return known.second.key == press.detail &&
               m_modifiers.fromHotKey(known.second.modifiers) == modifiers;
    });
    if (pressed != m_hotKeys.end() && m_onPress) {
        const auto handler = m_onPress; // it may set another one
        handler(pressed->second.id);
    }
}

} // namespace zivra::desktop
