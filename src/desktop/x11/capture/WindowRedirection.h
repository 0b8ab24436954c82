#pragma once

#include "desktop/x11/XcbConnection.h"

#include <set>

namespace zivra::desktop {

/// Makes the server keep the pixels of every window apart from the screen, now and for windows to come, until
/// the connection closes. Does not change what the screen shows.
///
/// Where no compositing manager has asked for that already, windows start with what the screen shows of them,
/// that is with parts of those that cover them. Of the windows in `secret` (top levels) nothing remains: what
/// is beneath them is black until its owner, who is told, has drawn it.
void redirectAllWindows(const XcbConnection &connection, const std::set<xcb_window_t> &secret);

} // namespace zivra::desktop
