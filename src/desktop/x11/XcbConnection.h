#pragma once

#include <QByteArray>
#include <QString>

#include <xcb/xcb.h>

#include <cstdint>
#include <cstdlib>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zivra::desktop {

/// Frees what XCB hands out: replies, events and errors.
struct XcbFree {
    void operator()(void *memory) const
    {
        std::free(
            memory); // NOLINT(cppcoreguidelines-owning-memory,cppcoreguidelines-no-malloc): XCB's contract
    }
};
template <typename T>
using XcbOwned = std::unique_ptr<T, XcbFree>;

/// A connection to an X server. Each object of ours that talks to the server owns one, used by one thread
/// at a time; requests may come from one thread while another waits for events, as XCB allows, but the
/// atoms belong to the thread that asks for them.
///
/// When the server goes away nothing here throws or exits: replies are null, properties are absent and
/// `isAlive()` is false from then on.
class XcbConnection {
public:
    /// Connects to a display such as ":0"; empty stands for $DISPLAY. Throws `PlatformError`.
    explicit XcbConnection(const QByteArray &displayName = {});

    [[nodiscard]] xcb_connection_t *get() const { return m_connection.get(); }
    [[nodiscard]] const xcb_screen_t &screen() const { return *m_screen; }
    [[nodiscard]] xcb_window_t root() const { return m_screen->root; }
    [[nodiscard]] bool isAlive() const { return xcb_connection_has_error(get()) == 0; }
    /// Readable when the server has sent something.
    [[nodiscard]] int fileDescriptor() const { return xcb_get_file_descriptor(get()); }
    /// Whether the server has this extension.
    [[nodiscard]] bool hasExtension(xcb_extension_t &extension) const;

    /// Waits for a reply: `reply(xcb_get_geometry_reply, cookie)`. Null when the request failed.
    template <typename Reply, typename Cookie>
    [[nodiscard]] XcbOwned<Reply> reply(Reply *(*wait)(xcb_connection_t *, Cookie, xcb_generic_error_t **),
                                        Cookie cookie) const
    {
        xcb_generic_error_t *error = nullptr;
        XcbOwned<Reply> reply(wait(get(), cookie, &error));
        const XcbOwned<xcb_generic_error_t> owned(error);
        return reply;
    }
    /// Waits until the server has carried out a `_checked` request; null when it succeeded.
    [[nodiscard]] XcbOwned<xcb_generic_error_t> check(xcb_void_cookie_t cookie) const
    {
        return XcbOwned<xcb_generic_error_t>(xcb_request_check(get(), cookie));
    }
    /// The next event, if one has come already. Never waits.
    [[nodiscard]] XcbOwned<xcb_generic_event_t> nextEvent() const
    {
        return XcbOwned<xcb_generic_event_t>(xcb_poll_for_event(get()));
    }
    void flush() const { xcb_flush(get()); }

    /// The atom of a name, made if need be and kept. `XCB_ATOM_NONE` when the server has gone.
    [[nodiscard]] xcb_atom_t atom(std::string_view name) const;

    /// Asks for a whole property without waiting for it, so that many can be under way at once.
    [[nodiscard]] xcb_get_property_cookie_t requestProperty(xcb_window_t window, xcb_atom_t property) const;
    /// The content of a property of 32-bit items; empty when there is none.
    [[nodiscard]] std::vector<std::uint32_t> values(xcb_get_property_cookie_t cookie) const;
    [[nodiscard]] std::vector<std::uint32_t> values(xcb_window_t window, xcb_atom_t property) const
    {
        return values(requestProperty(window, property));
    }
    [[nodiscard]] std::optional<std::uint32_t> value(xcb_window_t window, xcb_atom_t property) const;
    /// The content of a property of bytes; empty when there is none.
    [[nodiscard]] QByteArray bytes(xcb_get_property_cookie_t cookie) const;
    [[nodiscard]] QByteArray bytes(xcb_window_t window, xcb_atom_t property) const
    {
        return bytes(requestProperty(window, property));
    }
    /// The content of a property of text, read as UTF-8 or Latin-1 as its type says.
    [[nodiscard]] QString text(xcb_get_property_cookie_t cookie) const;

private:
    struct Disconnect {
        void operator()(xcb_connection_t *connection) const { xcb_disconnect(connection); }
    };

    std::unique_ptr<xcb_connection_t, Disconnect> m_connection;
    const xcb_screen_t *m_screen = nullptr; ///< inside the connection's set-up data
    mutable std::map<std::string, xcb_atom_t, std::less<>> m_atoms;
};

} // namespace zivra::desktop
