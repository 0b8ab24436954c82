#include "desktop/x11/WindowTree.h"

#include "desktop/x11/Pipelined.h"

#include <algorithm>
#include <map>
#include <utility>

namespace zivra::desktop {

namespace {

/// How far below the root clients are looked for: frame, its container, the client.
constexpr int kDeepestClient = 3;
/// WM_STATE of a window that its manager has let go (ICCCM 4.1.3.1).
constexpr std::uint32_t kWithdrawn = 0;

struct Candidate {
    xcb_window_t topLevel;
    xcb_window_t window;
};

std::vector<xcb_window_t> children(const XcbConnection &connection, xcb_query_tree_cookie_t cookie)
{
    const auto tree = connection.reply(xcb_query_tree_reply, cookie);
    if (!tree) {
        return {};
    }
    const auto *first = xcb_query_tree_children(tree.get());
    return {first, first + xcb_query_tree_children_length(tree.get())};
}

/// A client and the state its manager gave it, by top level.
struct Client {
    xcb_window_t window = XCB_WINDOW_NONE;
    std::uint32_t state = kWithdrawn;
};
using Clients = std::map<xcb_window_t, Client>;

/// Looks from each top level downwards for the windows that bear a WM_STATE.
Clients findClients(const XcbConnection &connection, const std::vector<StackedWindow> &topLevels)
{
    const xcb_atom_t stateAtom = connection.atom("WM_STATE");
    std::vector<Candidate> candidates;
    candidates.reserve(topLevels.size());
    for (const StackedWindow &window : topLevels) {
        candidates.push_back({window.topLevel, window.topLevel});
    }
    Clients clients;
    for (int depth = 1; depth <= kDeepestClient && !candidates.empty(); ++depth) {
        std::vector<Candidate> others;
        forEachAnswer(
            candidates,
            [&](const Candidate &each) { return connection.requestProperty(each.window, stateAtom); },
            [&](const Candidate &each, xcb_get_property_cookie_t cookie) {
                const auto state = connection.values(cookie);
                if (state.empty()) {
                    others.push_back(each);
                } else {
                    clients.emplace(each.topLevel, Client{each.window, state.front()});
                }
            });
        candidates.clear();
        forEachAnswer(
            others, [&](const Candidate &each) { return xcb_query_tree(connection.get(), each.window); },
            [&](const Candidate &each, xcb_query_tree_cookie_t cookie) {
                for (const xcb_window_t child : children(connection, cookie)) {
                    candidates.push_back({each.topLevel, child});
                }
            });
    }
    return clients;
}

std::vector<StackedWindow> topLevels(const XcbConnection &connection)
{
    auto windows = children(connection, xcb_query_tree(connection.get(), connection.root()));
    std::ranges::reverse(windows);
    std::vector<StackedWindow> stacked;
    forEachAnswer(
        windows, [&](xcb_window_t window) { return xcb_get_window_attributes(connection.get(), window); },
        [&](xcb_window_t window, xcb_get_window_attributes_cookie_t cookie) {
            const auto attributes = connection.reply(xcb_get_window_attributes_reply, cookie);
            if (attributes && attributes->_class == XCB_WINDOW_CLASS_INPUT_OUTPUT) {
                stacked.push_back({.topLevel = window,
                                   .client = window,
                                   .isViewable = attributes->map_state == XCB_MAP_STATE_VIEWABLE,
                                   .overridesRedirect = attributes->override_redirect != 0});
            }
        });
    return stacked;
}

} // namespace

std::vector<StackedWindow> stackedWindows(const XcbConnection &connection)
{
    auto stacked = topLevels(connection);
    const Clients clients = findClients(connection, stacked);
    std::erase_if(stacked, [&](StackedWindow &window) {
        const auto client = clients.find(window.topLevel);
        if (client == clients.end()) {
            return !window.isViewable;
        }
        window.client = client->second.window;
        window.isManaged = true;
        window.overridesRedirect = false;
        return client->second.state == kWithdrawn;
    });
    return stacked;
}

} // namespace zivra::desktop
