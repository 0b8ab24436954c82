#include "desktop/x11/XcbConnection.h"

#include "platform/PlatformError.h"

#include <limits>

namespace zivra::desktop {

namespace {

QString describe(int error)
{
    switch (error) {
    case XCB_CONN_CLOSED_PARSE_ERR:
        return QStringLiteral("its name is not valid");
    case XCB_CONN_CLOSED_INVALID_SCREEN:
        return QStringLiteral("it has no such screen");
    case XCB_CONN_CLOSED_MEM_INSUFFICIENT:
        return QStringLiteral("there is not enough memory");
    default:
        return QStringLiteral("it does not answer");
    }
}

const xcb_screen_t *screenOf(xcb_connection_t *connection, int number)
{
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (int index = 0; index < number && screens.rem > 0; ++index) {
        xcb_screen_next(&screens);
    }
    return screens.rem > 0 ? screens.data : nullptr;
}

} // namespace

XcbConnection::XcbConnection(const QByteArray &displayName)
{
    int screenNumber = 0;
    m_connection.reset(xcb_connect(displayName.isEmpty() ? nullptr : displayName.constData(), &screenNumber));
    const int error = xcb_connection_has_error(get());
    m_screen = error == 0 ? screenOf(get(), screenNumber) : nullptr;
    if (m_screen == nullptr) {
        const QByteArray name = displayName.isEmpty() ? qgetenv("DISPLAY") : displayName;
        throw PlatformError(QStringLiteral("The X display “%1” cannot be used: %2.")
                                .arg(QString::fromLocal8Bit(name), describe(error)));
    }
}

bool XcbConnection::hasExtension(xcb_extension_t &extension) const
{
    const auto *data = xcb_get_extension_data(get(), &extension);
    return data != nullptr && data->present != 0;
}

xcb_atom_t XcbConnection::atom(std::string_view name) const
{
    if (const auto known = m_atoms.find(name); known != m_atoms.end()) {
        return known->second;
    }
    const auto cookie = xcb_intern_atom(get(), 0, static_cast<std::uint16_t>(name.size()), name.data());
    const auto answer = reply(xcb_intern_atom_reply, cookie);
    if (!answer) {
        return XCB_ATOM_NONE;
    }
    return m_atoms.emplace(name, answer->atom).first->second;
}

xcb_get_property_cookie_t XcbConnection::requestProperty(xcb_window_t window, xcb_atom_t property) const
{
    // In units of four bytes; the server stops at the property's end.
    constexpr std::uint32_t kAll = std::numeric_limits<std::uint32_t>::max() / 4;
    return xcb_get_property(get(), 0, window, property, XCB_GET_PROPERTY_TYPE_ANY, 0, kAll);
}

std::vector<std::uint32_t> XcbConnection::values(xcb_get_property_cookie_t cookie) const
{
    const auto property = reply(xcb_get_property_reply, cookie);
    if (!property || property->format != 32) {
        return {};
    }
    const auto *first = static_cast<const std::uint32_t *>(xcb_get_property_value(property.get()));
    return {first, first + property->value_len};
}

std::optional<std::uint32_t> XcbConnection::value(xcb_window_t window, xcb_atom_t property) const
{
    const auto all = values(window, property);
    return all.empty() ? std::nullopt : std::optional(all.front());
}

QByteArray XcbConnection::bytes(xcb_get_property_cookie_t cookie) const
{
    const auto property = reply(xcb_get_property_reply, cookie);
    if (!property || property->format != 8) {
        return {};
    }
    return {static_cast<const char *>(xcb_get_property_value(property.get())),
            xcb_get_property_value_length(property.get())};
}

QString XcbConnection::text(xcb_get_property_cookie_t cookie) const
{
    const auto property = reply(xcb_get_property_reply, cookie);
    if (!property || property->format != 8) {
        return {};
    }
    const QByteArrayView content(static_cast<const char *>(xcb_get_property_value(property.get())),
                                 xcb_get_property_value_length(property.get()));
    return property->type == XCB_ATOM_STRING ? QString::fromLatin1(content) : QString::fromUtf8(content);
}

} // namespace zivra::desktop
