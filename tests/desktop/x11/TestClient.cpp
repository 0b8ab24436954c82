#include "TestClient.h"

#include <algorithm>
#include <array>

namespace zivra::desktop {

xcb_window_t TestClient::makeWindow(const Look &look) const
{
    xcb_connection_t *server = m_connection.get();
    const xcb_window_t window = xcb_generate_id(server);
    const std::array<std::uint32_t, 1> values{look.overridesRedirect ? 1U : 0U};
    xcb_create_window(server, XCB_COPY_FROM_PARENT, window, m_connection.root(),
                      static_cast<std::int16_t>(look.pixels.x()), static_cast<std::int16_t>(look.pixels.y()),
                      static_cast<std::uint16_t>(look.pixels.width()),
                      static_cast<std::uint16_t>(look.pixels.height()), 0,
                      look.isInputOnly ? XCB_WINDOW_CLASS_INPUT_ONLY : XCB_WINDOW_CLASS_INPUT_OUTPUT,
                      XCB_COPY_FROM_PARENT, XCB_CW_OVERRIDE_REDIRECT, values.data());
    setText(window, "_NET_WM_NAME", "UTF8_STRING", look.title);
    setText(window, "WM_CLASS", "STRING", QByteArrayView("instance\0Test Application\0", 26));
    if (*look.type != '\0') {
        const xcb_atom_t type = m_connection.atom(std::string("_NET_WM_WINDOW_TYPE_") + look.type);
        xcb_change_property(server, XCB_PROP_MODE_REPLACE, window, m_connection.atom("_NET_WM_WINDOW_TYPE"),
                            XCB_ATOM_ATOM, 32, 1, &type);
    }
    m_connection.flush();
    return window;
}

xcb_window_t TestClient::showWindow(const Look &look) const
{
    const xcb_window_t window = makeWindow(look);
    map(window);
    return window;
}

void TestClient::map(xcb_window_t window) const
{
    xcb_map_window(m_connection.get(), window);
    m_connection.flush();
}

void TestClient::unmap(xcb_window_t window) const
{
    xcb_unmap_window(m_connection.get(), window);
    m_connection.flush();
}

void TestClient::raise(xcb_window_t window) const
{
    constexpr std::array<std::uint32_t, 1> kAbove{XCB_STACK_MODE_ABOVE};
    xcb_configure_window(m_connection.get(), window, XCB_CONFIG_WINDOW_STACK_MODE, kAbove.data());
    m_connection.flush();
}

void TestClient::tellManager(xcb_window_t window, const char *message,
                             std::initializer_list<std::uint32_t> data) const
{
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = m_connection.atom(message);
    std::ranges::copy(data, std::begin(event.data.data32));
    xcb_send_event(m_connection.get(), 0, m_connection.root(),
                   XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char *>(&event));
    m_connection.flush();
}

void TestClient::setText(xcb_window_t window, const char *property, const char *type,
                         QByteArrayView text) const
{
    xcb_change_property(m_connection.get(), XCB_PROP_MODE_REPLACE, window, m_connection.atom(property),
                        m_connection.atom(type), 8, static_cast<std::uint32_t>(text.size()), text.data());
    m_connection.flush();
}

bool TestClient::grabKey(xcb_keycode_t key, std::uint16_t modifiers) const
{
    return m_connection.check(xcb_grab_key_checked(m_connection.get(), 0, m_connection.root(), modifiers, key,
                                                   XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC)) == nullptr;
}

void TestClient::ungrabKey(xcb_keycode_t key) const
{
    const auto request =
        xcb_ungrab_key_checked(m_connection.get(), key, m_connection.root(), XCB_MOD_MASK_ANY);
    const auto done = m_connection.check(request);
}

} // namespace zivra::desktop
