#pragma once

#include "desktop/x11/XcbConnection.h"
#include "platform/ContentFilter.h"

#include <cstdint>
#include <set>
#include <vector>

namespace zivra::desktop {

/// The windows that a picture leaves out: those that a filter names, and those that a process shows
/// meanwhile.
class ExcludedWindows {
public:
    ExcludedWindows(const XcbConnection &connection, const ContentFilter &filter);

    /// Learns from an event of the root window about its children.
    void note(const xcb_generic_event_t &event);

    [[nodiscard]] bool isEmpty() const { return m_windows.empty(); }
    /// The children of the root that they are, or are in.
    [[nodiscard]] std::set<xcb_window_t> findTopLevels();

private:
    void addWindowsOfProcess();
    [[nodiscard]] bool isOfProcess(xcb_window_t window) const;
    [[nodiscard]] bool isPutInTray(const xcb_generic_event_t &event) const;

    const XcbConnection &m_connection;
    std::int64_t m_processID = 0; ///< 0: none
    std::set<std::uint32_t> m_kept;
    std::vector<std::uint32_t> m_windows;
};

} // namespace zivra::desktop
