#include "desktop/x11/capture/ServerEvents.h"

#include <xcb/randr.h>
#include <xcb/xfixes.h>
#include <xcb/xinput.h>

namespace zivra::desktop {

namespace {

const xcb_query_extension_reply_t &extension(const XcbConnection &connection, xcb_extension_t &id)
{
    return *xcb_get_extension_data(connection.get(), &id);
}

bool isWheel(std::uint32_t button)
{
    return button >= XCB_BUTTON_INDEX_4 && button <= 7;
}

} // namespace

ServerEvents::ServerEvents(const XcbConnection &connection)
    : m_firstDamageEvent(extension(connection, xcb_damage_id).first_event),
      m_firstFixesEvent(extension(connection, xcb_xfixes_id).first_event),
      m_firstDisplayEvent(extension(connection, xcb_randr_id).first_event),
      m_inputExtension(extension(connection, xcb_input_id).major_opcode)
{
}

void ServerEvents::select(const XcbConnection &connection, bool showsCursor, bool showsMouseClicks)
{
    xcb_connection_t *const server = connection.get();
    const xcb_window_t root = connection.root();
    const std::uint32_t mask =
        XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(server, root, XCB_CW_EVENT_MASK, &mask);
    xcb_randr_select_input(server, root,
                           XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE | XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE |
                               XCB_RANDR_NOTIFY_MASK_OUTPUT_CHANGE);
    if (showsCursor) {
        xcb_xfixes_select_cursor_input(server, root, XCB_XFIXES_CURSOR_NOTIFY_MASK_DISPLAY_CURSOR);
    }
    // Raw events come during other clients' grabs too.
    struct {
        xcb_input_event_mask_t head;
        std::uint32_t mask;
    } input{{XCB_INPUT_DEVICE_ALL_MASTER, 1}, 0};
    if (showsCursor) {
        input.mask |= XCB_INPUT_XI_EVENT_MASK_RAW_MOTION;
    }
    if (showsMouseClicks) {
        input.mask |= XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS;
    }
    xcb_input_xi_select_events(server, root, 1, &input.head);
}

ServerEvents::Kind ServerEvents::kind(const xcb_generic_event_t &event) const
{
    constexpr int kSentByClient = 0x80;
    const int type = event.response_type & ~kSentByClient;
    if (type == m_firstDamageEvent + XCB_DAMAGE_NOTIFY) {
        return Kind::Damage;
    }
    if (type == m_firstFixesEvent + XCB_XFIXES_CURSOR_NOTIFY) {
        return Kind::CursorImage;
    }
    if (type == m_firstDisplayEvent + XCB_RANDR_SCREEN_CHANGE_NOTIFY ||
        type == m_firstDisplayEvent + XCB_RANDR_NOTIFY) {
        return Kind::Displays;
    }
    if (type >= XCB_CREATE_NOTIFY && type <= XCB_CIRCULATE_NOTIFY) {
        return Kind::Structure;
    }
    if (type == XCB_PROPERTY_NOTIFY) {
        return Kind::Property;
    }
    return type == XCB_GE_GENERIC ? inputKind(reinterpret_cast<const xcb_ge_generic_event_t &>(event))
                                  : Kind::Other;
}

ServerEvents::Kind ServerEvents::inputKind(const xcb_ge_generic_event_t &event) const
{
    if (event.extension != m_inputExtension) {
        return Kind::Other;
    }
    if (event.event_type == XCB_INPUT_RAW_MOTION) {
        return Kind::Motion;
    }
    const bool isPress = event.event_type == XCB_INPUT_RAW_BUTTON_PRESS;
    return isPress && !isWheel(reinterpret_cast<const xcb_input_raw_button_press_event_t &>(event).detail)
               ? Kind::Press
               : Kind::Other;
}

} // namespace zivra::desktop
