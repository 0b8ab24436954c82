#include "desktop/x11/panels/FocusKeeper.h"

#include <utility>

namespace zivra::desktop {

void FocusKeeper::remember()
{
    const auto focus = m_connection.reply(xcb_get_input_focus_reply, xcb_get_input_focus(m_connection.get()));
    m_before = focus ? std::optional(*focus) : std::nullopt;
}

void FocusKeeper::giveBack(xcb_window_t ours)
{
    const auto before = std::exchange(m_before, std::nullopt);
    const auto now = m_connection.reply(xcb_get_input_focus_reply, xcb_get_input_focus(m_connection.get()));
    const bool isOurs = now && (now->focus == ours || now->focus == XCB_NONE);
    if (!before || !isOurs) {
        return;
    }
    // A window that has gone meanwhile is refused; then nobody is left without a keyboard.
    const auto refused = m_connection.check(
        xcb_set_input_focus_checked(m_connection.get(), before->revert_to, before->focus, XCB_CURRENT_TIME));
    if (refused) {
        xcb_set_input_focus(m_connection.get(), XCB_INPUT_FOCUS_POINTER_ROOT, XCB_INPUT_FOCUS_POINTER_ROOT,
                            XCB_CURRENT_TIME);
        m_connection.flush();
    }
}

} // namespace zivra::desktop
