#include "desktop/x11/capture/ExcludedWindows.h"

#include "desktop/x11/WindowList.h"
#include "desktop/x11/capture/WindowStack.h"

#include <xcb/res.h>

#include <algorithm>

namespace zivra::desktop {

namespace {

constexpr int kSentByClient = 0x80;

/// The window that was made, shown, or given to the root or to a window manager's frame.
xcb_window_t appearing(const xcb_generic_event_t &event)
{
    switch (event.response_type & ~kSentByClient) {
    case XCB_CREATE_NOTIFY:
        return reinterpret_cast<const xcb_create_notify_event_t &>(event).window;
    case XCB_MAP_NOTIFY:
        return reinterpret_cast<const xcb_map_notify_event_t &>(event).window;
    case XCB_REPARENT_NOTIFY:
        return reinterpret_cast<const xcb_reparent_notify_event_t &>(event).window;
    default:
        return XCB_WINDOW_NONE;
    }
}

} // namespace

ExcludedWindows::ExcludedWindows(const XcbConnection &connection, const ContentFilter &filter)
    : m_connection(connection),
      m_kept(filter.keptWindowIDs.begin(), filter.keptWindowIDs.end()),
      m_windows(filter.windowIDs)
{
    if (filter.excludedProcessID && connection.hasExtension(xcb_res_id)) {
        m_processID = *filter.excludedProcessID;
        addWindowsOfProcess();
    }
}

/// Asks the server each time: clients come and go, and their numbers are used again.
bool ExcludedWindows::isOfProcess(xcb_window_t window) const
{
    const xcb_res_client_id_spec_t wanted{window, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
    const auto answer = m_connection.reply(xcb_res_query_client_ids_reply,
                                           xcb_res_query_client_ids(m_connection.get(), 1, &wanted));
    if (!answer || xcb_res_query_client_ids_ids_length(answer.get()) == 0) {
        return false;
    }
    const auto first = xcb_res_query_client_ids_ids_iterator(answer.get());
    return xcb_res_client_id_value_value_length(first.data) > 0 &&
           *xcb_res_client_id_value_value(first.data) == m_processID;
}

/// Those in a window manager's hands, minimised ones too: they come back without a trace of their own.
void ExcludedWindows::addWindowsOfProcess()
{
    for (const ListedWindow &listed : listWindows(m_connection)) {
        if (listed.processID == m_processID && !m_kept.contains(listed.window)) {
            m_windows.push_back(listed.window);
        }
    }
    std::ranges::sort(m_windows);
    m_windows.erase(std::unique(m_windows.begin(), m_windows.end()), m_windows.end());
}

/// An icon in the tray is a part of the tray's window, which is to be seen.
bool ExcludedWindows::isPutInTray(const xcb_generic_event_t &event) const
{
    if ((event.response_type & ~kSentByClient) != XCB_REPARENT_NOTIFY) {
        return false;
    }
    const auto &reparenting = reinterpret_cast<const xcb_reparent_notify_event_t &>(event);
    const auto tray = m_connection.reply(
        xcb_get_selection_owner_reply,
        xcb_get_selection_owner(m_connection.get(), m_connection.atom("_NET_SYSTEM_TRAY_S0")));
    const std::uint32_t withinClient = xcb_get_setup(m_connection.get())->resource_id_mask;
    const bool isOfTray = tray && tray->owner != XCB_WINDOW_NONE &&
                          (tray->owner & ~withinClient) == (reparenting.parent & ~withinClient);
    // A desktop's shell may be tray and window manager at once; only the latter gives windows a state.
    return isOfTray && m_connection.values(reparenting.window, m_connection.atom("WM_STATE")).empty();
}

void ExcludedWindows::note(const xcb_generic_event_t &event)
{
    const xcb_window_t window = appearing(event);
    if (m_processID == 0 || window == XCB_WINDOW_NONE || m_kept.contains(window)) {
        return;
    }
    const auto known = std::ranges::find(m_windows, window);
    if (isPutInTray(event)) {
        std::erase(m_windows, window);
    } else if (known == m_windows.end() && isOfProcess(window)) {
        m_windows.push_back(window);
    }
}

std::set<xcb_window_t> ExcludedWindows::findTopLevels()
{
    const auto tops = topLevelsOf(m_connection, m_windows);
    std::set<xcb_window_t> found(tops.begin(), tops.end());
    found.erase(XCB_WINDOW_NONE);
    std::erase_if(m_windows, [&, index = std::size_t{0}](std::uint32_t) mutable {
        return tops[index++] == XCB_WINDOW_NONE;
    });
    return found;
}

} // namespace zivra::desktop
