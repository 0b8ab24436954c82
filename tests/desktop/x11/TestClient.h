#pragma once

#include "desktop/x11/XcbConnection.h"

#include <QRect>

#include <algorithm>
#include <initializer_list>
#include <string>

namespace zivra::desktop {

/// An application of the test with windows of its own, which go away with it.
class TestClient : public XcbConnection {
public:
    struct Look {
        const char *title = "";
        const char *type = ""; ///< _NET_WM_WINDOW_TYPE_ and this
        bool overridesRedirect = false;
    };
    static constexpr QRect kPlace{200, 150, 300, 200}; ///< of every window, in pixels

    /// Its windows have numbers that no client before had: the server gives a closed connection's to the next
    /// one, which a window manager that lags takes for the same windows.
    explicit TestClient(const QByteArray &display = {}) : XcbConnection(display)
    {
        static int before = 0;
        constexpr int kMostWindows = 16;
        for (int number = 0; number < before * kMostWindows; ++number) {
            xcb_generate_id(get());
        }
        ++before;
    }

    [[nodiscard]] xcb_window_t showWindow() const { return showWindow(Look()); }
    [[nodiscard]] xcb_window_t showWindow(const Look &look) const
    {
        const xcb_window_t window = xcb_generate_id(get());
        const std::uint32_t overridesRedirect = look.overridesRedirect ? 1 : 0;
        xcb_create_window(get(), XCB_COPY_FROM_PARENT, window, root(), kPlace.x(), kPlace.y(), kPlace.width(),
                          kPlace.height(), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                          XCB_CW_OVERRIDE_REDIRECT, &overridesRedirect);
        setText(window, "_NET_WM_NAME", "UTF8_STRING", look.title);
        setText(window, "WM_CLASS", "STRING", QByteArrayView("instance\0Test Application\0", 26));
        setNumbers(window, "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM,
                   {atom(std::string("_NET_WM_WINDOW_TYPE_") + look.type)});
        map(window);
        return window;
    }
    void map(xcb_window_t window) const { check(xcb_map_window_checked(get(), window)); }
    void tellManager(xcb_window_t window, const char *message,
                     std::initializer_list<std::uint32_t> data) const
    {
        xcb_client_message_event_t event{};
        event.response_type = XCB_CLIENT_MESSAGE;
        event.format = 32;
        event.window = window;
        event.type = atom(message);
        std::ranges::copy(data, std::begin(event.data.data32));
        check(xcb_send_event_checked(
            get(), 0, root(), XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
            reinterpret_cast<const char *>(&event)));
    }
    void setText(xcb_window_t window, const char *property, const char *type, QByteArrayView text) const
    {
        check(xcb_change_property_checked(get(), XCB_PROP_MODE_REPLACE, window, atom(property), atom(type), 8,
                                          static_cast<std::uint32_t>(text.size()), text.data()));
    }
    void setNumbers(xcb_window_t window, const char *property, xcb_atom_t type,
                    std::initializer_list<std::uint32_t> numbers) const
    {
        check(xcb_change_property_checked(get(), XCB_PROP_MODE_REPLACE, window, atom(property), type, 32,
                                          static_cast<std::uint32_t>(numbers.size()), data(numbers)));
    }
    [[nodiscard]] bool grabKey(xcb_keycode_t key, std::uint16_t modifiers) const
    {
        return check(
            xcb_grab_key_checked(get(), 0, root(), modifiers, key, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
    }

private:
    /// Once it returns, the server has done it.
    bool check(xcb_void_cookie_t cookie) const { return XcbConnection::check(cookie) == nullptr; }
};

} // namespace zivra::desktop
