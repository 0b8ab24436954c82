#include "desktop/x11/capture/WindowRedirection.h"

#include "desktop/x11/capture/WindowStack.h"

#include <QRegion>

#include <xcb/composite.h>

#include <array>
#include <vector>

namespace zivra::desktop {

namespace {

/// The server serves nobody else as long as this lives.
class GrabbedServer {
public:
    explicit GrabbedServer(const XcbConnection &connection) : m_connection(connection)
    {
        xcb_grab_server(m_connection.get());
    }
    ~GrabbedServer()
    {
        xcb_ungrab_server(m_connection.get());
        m_connection.flush();
    }
    GrabbedServer(const GrabbedServer &) = delete;
    GrabbedServer &operator=(const GrabbedServer &) = delete;

private:
    const XcbConnection &m_connection;
};

/// `region` in pixels of the window.
void blacken(const XcbConnection &connection, xcb_window_t window, const QRegion &region)
{
    std::vector<xcb_rectangle_t> rectangles;
    for (const QRect &each : region) {
        rectangles.push_back({static_cast<std::int16_t>(each.x()), static_cast<std::int16_t>(each.y()),
                              static_cast<std::uint16_t>(each.width()),
                              static_cast<std::uint16_t>(each.height())});
    }
    const std::array<std::uint32_t, 2> values{connection.screen().black_pixel,
                                              XCB_SUBWINDOW_MODE_INCLUDE_INFERIORS};
    const xcb_gcontext_t brush = xcb_generate_id(connection.get());
    xcb_create_gc(connection.get(), brush, window, XCB_GC_FOREGROUND | XCB_GC_SUBWINDOW_MODE, values.data());
    xcb_poly_fill_rectangle(connection.get(), window, brush, static_cast<std::uint32_t>(rectangles.size()),
                            rectangles.data());
    xcb_free_gc(connection.get(), brush);
}

/// Has a window and those in it draw a region, given in pixels of the window, anew.
void expose(const XcbConnection &connection, xcb_window_t window, const QRegion &region)
{
    for (const QRect &each : region) {
        xcb_clear_area(connection.get(), 1, window, static_cast<std::int16_t>(each.x()),
                       static_cast<std::int16_t>(each.y()), static_cast<std::uint16_t>(each.width()),
                       static_cast<std::uint16_t>(each.height()));
    }
    const auto tree = connection.reply(xcb_query_tree_reply, xcb_query_tree(connection.get(), window));
    if (!tree) {
        return;
    }
    const xcb_window_t *children = xcb_query_tree_children(tree.get());
    for (int index = 0; index < xcb_query_tree_children_length(tree.get()); ++index) {
        const auto place =
            connection.reply(xcb_get_geometry_reply, xcb_get_geometry(connection.get(), children[index]));
        if (place) {
            const QPoint corner(place->x + place->border_width, place->y + place->border_width);
            const QRegion inside = region.translated(-corner) & QRect(0, 0, place->width, place->height);
            if (!inside.isEmpty()) {
                expose(connection, children[index], inside);
            }
        }
    }
}

} // namespace

void redirectAllWindows(const XcbConnection &connection, const std::set<xcb_window_t> &secret)
{
    const auto manager =
        connection.reply(xcb_get_selection_owner_reply,
                         xcb_get_selection_owner(connection.get(), connection.atom("_NET_WM_CM_S0")));
    // Nobody may draw between the redirection and the blackening, else that would be lost.
    const GrabbedServer grabbed(connection);
    xcb_composite_redirect_subwindows(connection.get(), connection.root(), XCB_COMPOSITE_REDIRECT_AUTOMATIC);
    if (manager && manager->owner != XCB_WINDOW_NONE) {
        return;
    }
    const std::vector<TopLevel> stack = topLevels(connection);
    QRegion covered;
    for (auto each = stack.rbegin(); each != stack.rend(); ++each) {
        if (!each->isViewable) {
            continue;
        }
        if (secret.contains(each->window)) {
            covered += each->outline;
        } else if (covered.intersects(each->outline)) {
            const QPoint corner = each->outline.topLeft() + QPoint(each->border, each->border);
            const QRegion beneath = (covered & each->outline).translated(-corner);
            blacken(connection, each->window, beneath);
            expose(connection, each->window, beneath);
        }
    }
}

} // namespace zivra::desktop
