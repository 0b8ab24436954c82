#include "desktop/x11/WindowList.h"

#include "desktop/x11/Pipelined.h"
#include "desktop/x11/WindowTree.h"

#include <QMargins>

#include <xcb/res.h>

#include <algorithm>
#include <initializer_list>

namespace zivra::desktop {

namespace {

constexpr int kDesktopLayer = -1;
constexpr int kNormalLayer = 0;
constexpr int kDockLayer = 1;
constexpr int kOverlayLayer = 2;

/// _NET_WM_DESKTOP of a window on every workspace.
constexpr std::uint32_t kEveryWorkspace = 0xFFFFFFFF;

using Values = std::vector<std::uint32_t>;

bool contains(const Values &values, std::uint32_t value)
{
    return std::ranges::find(values, value) != values.end();
}

/// Property values left, right, top, bottom, as window managers and toolkits write them.
QMargins margins(const Values &extents)
{
    constexpr std::size_t kSides = 4;
    if (extents.size() < kSides) {
        return {};
    }
    return {static_cast<int>(extents[0]), static_cast<int>(extents[2]), static_cast<int>(extents[1]),
            static_cast<int>(extents[3])};
}

QRect outerRect(const xcb_get_geometry_reply_t &geometry, int x, int y)
{
    return {x, y, geometry.width + 2 * geometry.border_width, geometry.height + 2 * geometry.border_width};
}

/// Reads the windows' details; knows the atoms and what is the same for all of them.
class DetailReader {
public:
    explicit DetailReader(const XcbConnection &connection)
        : m_connection(connection),
          m_hasClientIDs(connection.hasExtension(xcb_res_id)),
          m_workspace(connection.value(connection.root(), connection.atom("_NET_CURRENT_DESKTOP")))
    {
    }

    struct Cookies {
        xcb_get_geometry_cookie_t topLevelGeometry;
        xcb_get_geometry_cookie_t clientGeometry;
        xcb_translate_coordinates_cookie_t clientOrigin;
        xcb_get_property_cookie_t frameExtents;
        xcb_get_property_cookie_t shadowExtents;
        xcb_get_property_cookie_t title;
        xcb_get_property_cookie_t plainTitle;
        xcb_get_property_cookie_t className;
        xcb_get_property_cookie_t types;
        xcb_get_property_cookie_t states;
        xcb_get_property_cookie_t workspace;
        xcb_get_property_cookie_t processID;
        xcb_res_query_client_ids_cookie_t clientIDs;
    };

    [[nodiscard]] Cookies ask(const StackedWindow &window) const
    {
        xcb_connection_t *server = m_connection.get();
        const auto property = [&](std::string_view name) {
            return m_connection.requestProperty(window.client, m_connection.atom(name));
        };
        const xcb_res_client_id_spec_t wanted{window.client, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
        return {
            .topLevelGeometry = xcb_get_geometry(server, window.topLevel),
            .clientGeometry = xcb_get_geometry(server, window.client),
            .clientOrigin = xcb_translate_coordinates(server, window.client, m_connection.root(), 0, 0),
            .frameExtents = property("_NET_FRAME_EXTENTS"),
            .shadowExtents = property("_GTK_FRAME_EXTENTS"),
            .title = property("_NET_WM_NAME"),
            .plainTitle = property("WM_NAME"),
            .className = property("WM_CLASS"),
            .types = property("_NET_WM_WINDOW_TYPE"),
            .states = property("_NET_WM_STATE"),
            .workspace = property("_NET_WM_DESKTOP"),
            .processID = property("_NET_WM_PID"),
            .clientIDs = m_hasClientIDs ? xcb_res_query_client_ids(server, 1, &wanted)
                                        : xcb_res_query_client_ids_cookie_t{},
        };
    }

    /// Absent when the window has gone meanwhile.
    [[nodiscard]] std::optional<ListedWindow> read(const StackedWindow &window, const Cookies &cookies) const
    {
        const QRect pixels = outerPixels(cookies);
        const QString title = m_connection.text(cookies.title);
        const QString plainTitle = m_connection.text(cookies.plainTitle);
        const Values types = m_connection.values(cookies.types);
        const Values states = m_connection.values(cookies.states);
        const Values workspace = m_connection.values(cookies.workspace);
        ListedWindow listed{
            .window = window.client,
            .pixels = pixels,
            .title = title.isEmpty() ? plainTitle : title,
            .className = className(m_connection.bytes(cookies.className)),
            .layer = layer(window, types),
            .isOnScreen = window.isViewable && !contains(states, m_connection.atom("_NET_WM_STATE_HIDDEN")) &&
                          isOnThisWorkspace(workspace),
            .processID = processID(cookies),
        };
        return pixels.isEmpty() ? std::nullopt : std::optional(std::move(listed));
    }

private:
    [[nodiscard]] QRect outerPixels(const Cookies &cookies) const
    {
        const auto topLevel = m_connection.reply(xcb_get_geometry_reply, cookies.topLevelGeometry);
        const auto client = m_connection.reply(xcb_get_geometry_reply, cookies.clientGeometry);
        const auto origin = m_connection.reply(xcb_translate_coordinates_reply, cookies.clientOrigin);
        const Values frame = m_connection.values(cookies.frameExtents);
        const Values shadow = m_connection.values(cookies.shadowExtents);
        if (!topLevel || !client || !origin) {
            return {};
        }
        // A frame may reach beyond what is seen of it, so what the manager says of the decoration goes first.
        const QRect inner(origin->dst_x, origin->dst_y, client->width, client->height);
        if (!shadow.empty()) {
            return inner.marginsRemoved(margins(shadow));
        }
        return frame.empty() ? outerRect(*topLevel, topLevel->x, topLevel->y)
                             : inner.marginsAdded(margins(frame));
    }

    /// WM_CLASS holds two texts that each end with a zero: the instance's name and the class.
    static QString className(const QByteArray &classProperty)
    {
        const auto end = classProperty.indexOf('\0');
        return end < 0 ? QString() : QString::fromUtf8(classProperty.constData() + end + 1);
    }

    [[nodiscard]] int layer(const StackedWindow &window, const Values &types) const
    {
        const auto isOneOf = [&](std::initializer_list<std::string_view> names) {
            return std::ranges::any_of(
                names, [&](std::string_view name) { return contains(types, m_connection.atom(name)); });
        };
        if (isOneOf({"_NET_WM_WINDOW_TYPE_DESKTOP"})) {
            return kDesktopLayer;
        }
        if (isOneOf({"_NET_WM_WINDOW_TYPE_DOCK"})) {
            return kDockLayer;
        }
        const bool isTransient = isOneOf({"_NET_WM_WINDOW_TYPE_NOTIFICATION", "_NET_WM_WINDOW_TYPE_TOOLTIP",
                                          "_NET_WM_WINDOW_TYPE_DND", "_NET_WM_WINDOW_TYPE_POPUP_MENU",
                                          "_NET_WM_WINDOW_TYPE_DROPDOWN_MENU", "_NET_WM_WINDOW_TYPE_COMBO"});
        return isTransient || window.overridesRedirect ? kOverlayLayer : kNormalLayer;
    }

    [[nodiscard]] bool isOnThisWorkspace(const Values &workspace) const
    {
        return !m_workspace || workspace.empty() || workspace.front() == *m_workspace ||
               workspace.front() == kEveryWorkspace;
    }

    /// The server's own knowledge goes before what an application says of itself.
    [[nodiscard]] std::optional<std::int64_t> processID(const Cookies &cookies) const
    {
        const Values said = m_connection.values(cookies.processID);
        const auto known =
            m_hasClientIDs ? m_connection.reply(xcb_res_query_client_ids_reply, cookies.clientIDs) : nullptr;
        if (known && xcb_res_query_client_ids_ids_length(known.get()) > 0) {
            const auto first = xcb_res_query_client_ids_ids_iterator(known.get());
            if (xcb_res_client_id_value_value_length(first.data) > 0) {
                return *xcb_res_client_id_value_value(first.data);
            }
        }
        return said.empty() ? std::nullopt : std::optional<std::int64_t>(said.front());
    }

    const XcbConnection &m_connection;
    bool m_hasClientIDs;
    std::optional<std::uint32_t> m_workspace; ///< absent without a window manager that has workspaces
};

} // namespace

std::vector<ListedWindow> listWindows(const XcbConnection &connection)
{
    const DetailReader reader(connection);
    std::vector<ListedWindow> windows;
    forEachAnswer(
        stackedWindows(connection), [&](const StackedWindow &window) { return reader.ask(window); },
        [&](const StackedWindow &window, const DetailReader::Cookies &cookies) {
            if (auto listed = reader.read(window, cookies)) {
                windows.push_back(*std::move(listed));
            }
        });
    return windows;
}

} // namespace zivra::desktop
