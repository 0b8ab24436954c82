#pragma once

#include "desktop/x11/XcbConnection.h"

#include <optional>

namespace zivra::desktop {

/// Remembers who has the keyboard and gives it back. Main thread only.
class FocusKeeper {
public:
    /// The connection outlives the keeper.
    explicit FocusKeeper(const XcbConnection &connection) : m_connection(connection) {}

    /// To be called before one of our windows takes the keyboard.
    void remember();
    /// Gives it back, unless meanwhile somebody other than `ours` has got it.
    void giveBack(xcb_window_t ours);

private:
    const XcbConnection &m_connection;
    std::optional<xcb_get_input_focus_reply_t> m_before;
};

} // namespace zivra::desktop
