#include "desktop/x11/capture/WindowStack.h"

#include "desktop/x11/Pipelined.h"

#include <utility>

namespace zivra::desktop {

std::vector<TopLevel> topLevels(const XcbConnection &connection)
{
    xcb_connection_t *const server = connection.get();
    const auto tree = connection.reply(xcb_query_tree_reply, xcb_query_tree(server, connection.root()));
    if (!tree) {
        return {};
    }
    const auto *first = xcb_query_tree_children(tree.get());
    const std::vector<xcb_window_t> windows(first, first + xcb_query_tree_children_length(tree.get()));
    std::vector<TopLevel> found;
    forEachAnswer(
        windows,
        [&](xcb_window_t window) {
            return std::pair(xcb_get_window_attributes(server, window), xcb_get_geometry(server, window));
        },
        [&](xcb_window_t window, const auto &cookies) {
            const auto attributes = connection.reply(xcb_get_window_attributes_reply, cookies.first);
            const auto geometry = connection.reply(xcb_get_geometry_reply, cookies.second);
            if (attributes && geometry && attributes->_class == XCB_WINDOW_CLASS_INPUT_OUTPUT) {
                const int border = geometry->border_width;
                found.push_back({.window = window,
                                 .outline = QRect(geometry->x, geometry->y, geometry->width + 2 * border,
                                                  geometry->height + 2 * border),
                                 .border = border,
                                 .visual = attributes->visual,
                                 .isViewable = attributes->map_state == XCB_MAP_STATE_VIEWABLE});
            }
        });
    return found;
}

std::vector<xcb_window_t> topLevelsOf(const XcbConnection &connection,
                                      const std::vector<std::uint32_t> &windows)
{
    constexpr int kDeepest = 8; // ends a search among windows that are moved about meanwhile
    std::vector<xcb_window_t> found(windows.size(), XCB_WINDOW_NONE);
    std::vector<std::pair<std::size_t, xcb_window_t>> open;
    for (std::size_t index = 0; index < windows.size(); ++index) {
        open.emplace_back(index, windows[index]);
    }
    for (int depth = 0; depth < kDeepest && !open.empty(); ++depth) {
        std::vector<std::pair<std::size_t, xcb_window_t>> parents;
        forEachAnswer(
            open, [&](const auto &each) { return xcb_query_tree(connection.get(), each.second); },
            [&](const auto &each, xcb_query_tree_cookie_t cookie) {
                const auto tree = connection.reply(xcb_query_tree_reply, cookie);
                if (tree && tree->parent == connection.root()) {
                    found[each.first] = each.second;
                } else if (tree && tree->parent != XCB_WINDOW_NONE) {
                    parents.emplace_back(each.first, tree->parent);
                }
            });
        open = std::move(parents);
    }
    return found;
}

} // namespace zivra::desktop
