#include "desktop/x11/capture/ScreenWatcher.h"

#include <xcb/randr.h>
#include <xcb/xinput.h>

#include <algorithm>

namespace zivra::desktop {

namespace {

constexpr std::uint8_t kSentFlag = 0x80; // set in events that another client sent

const xcb_query_extension_reply_t &extension(const XcbConnection &x, xcb_extension_t &id)
{
    return *xcb_get_extension_data(x.get(), &id);
}

/// Buttons 4 to 7 are the wheel.
bool isWheel(std::uint32_t button)
{
    return button >= 4 && button <= 7;
}

} // namespace

ScreenWatcher::ScreenWatcher(const XcbConnection &connection, QRect area, bool watchesWindows)
    : m_connection(connection),
      m_area(area),
      m_rootDamage(xcb_generate_id(connection.get())),
      m_region(xcb_generate_id(connection.get())),
      m_damageEvent(extension(connection, xcb_damage_id).first_event),
      m_fixesEvent(extension(connection, xcb_xfixes_id).first_event),
      m_randrEvent(extension(connection, xcb_randr_id).first_event),
      m_inputOpcode(extension(connection, xcb_input_id).major_opcode)
{
    xcb_damage_create(m_connection.get(), m_rootDamage, m_connection.root(),
                      XCB_DAMAGE_REPORT_LEVEL_NON_EMPTY);
    xcb_xfixes_create_region(m_connection.get(), m_region, 0, nullptr);
    selectEvents(watchesWindows);
    m_connection.flush();
}

ScreenWatcher::~ScreenWatcher()
{
    watchWindows({});
    xcb_damage_destroy(m_connection.get(), m_rootDamage);
    xcb_xfixes_destroy_region(m_connection.get(), m_region);
    m_connection.flush();
}

void ScreenWatcher::selectEvents(bool watchesWindows) const
{
    xcb_connection_t *const x = m_connection.get();
    const xcb_window_t root = m_connection.root();
    xcb_xfixes_select_cursor_input(x, root, XCB_XFIXES_CURSOR_NOTIFY_MASK_DISPLAY_CURSOR);
    xcb_randr_select_input(x, root,
                           XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE | XCB_RANDR_NOTIFY_MASK_OUTPUT_CHANGE);
    if (watchesWindows) {
        const std::uint32_t mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
        xcb_change_window_attributes(x, root, XCB_CW_EVENT_MASK, &mask);
    }
    // Raw events come during other clients' grabs too.
    const struct {
        xcb_input_event_mask_t head;
        std::uint32_t mask;
    } input{{XCB_INPUT_DEVICE_ALL_MASTER, 1},
            XCB_INPUT_XI_EVENT_MASK_RAW_MOTION | XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS};
    xcb_input_xi_select_events(x, root, 1, &input.head);
}

ScreenWatcher::Events ScreenWatcher::takeEvents()
{
    Events events;
    while (const auto event = m_connection.nextEvent()) {
        note(*event, events);
    }
    return events;
}

void ScreenWatcher::note(const xcb_generic_event_t &event, Events &events)
{
    const auto type = static_cast<std::uint8_t>(event.response_type & ~kSentFlag);
    if (type == m_damageEvent + XCB_DAMAGE_NOTIFY) {
        const auto &damage = reinterpret_cast<const xcb_damage_notify_event_t &>(event);
        m_isDamaged = true;
        m_windowDrew = m_windowDrew || damage.damage != m_rootDamage;
    } else if (type == m_fixesEvent + XCB_XFIXES_CURSOR_NOTIFY) {
        events.cursorMoved = true;
    } else if (type == m_randrEvent + XCB_RANDR_SCREEN_CHANGE_NOTIFY ||
               type == m_randrEvent + XCB_RANDR_NOTIFY) {
        events.displaysChanged = true;
    } else if (type == XCB_GE_GENERIC) {
        noteInput(reinterpret_cast<const xcb_ge_generic_event_t &>(event), events);
    } else if (type >= XCB_CREATE_NOTIFY && type <= XCB_CIRCULATE_NOTIFY) {
        events.windowsChanged = true;
    }
}

void ScreenWatcher::noteInput(const xcb_ge_generic_event_t &event, Events &events) const
{
    if (event.extension != m_inputOpcode) {
        return;
    }
    if (event.event_type == XCB_INPUT_RAW_MOTION) {
        events.cursorMoved = true;
    } else if (event.event_type == XCB_INPUT_RAW_BUTTON_PRESS &&
               !isWheel(reinterpret_cast<const xcb_input_raw_button_press_event_t &>(event).detail)) {
        const auto pointer = m_connection.reply(xcb_query_pointer_reply,
                                                xcb_query_pointer(m_connection.get(), m_connection.root()));
        if (pointer) {
            events.presses.emplace_back(pointer->root_x, pointer->root_y);
        }
    }
}

bool ScreenWatcher::takeDamage()
{
    if (!m_isDamaged) {
        return false;
    }
    m_isDamaged = false;
    const bool windowDrew = std::exchange(m_windowDrew, false);
    xcb_connection_t *const x = m_connection.get();
    for (const auto &[window, damage] : m_windowDamage) {
        xcb_damage_subtract(x, damage, XCB_NONE, XCB_NONE);
    }
    xcb_damage_subtract(x, m_rootDamage, XCB_NONE, m_region);
    const auto region =
        m_connection.reply(xcb_xfixes_fetch_region_reply, xcb_xfixes_fetch_region(x, m_region));
    if (windowDrew || !region) {
        return true;
    }
    const xcb_rectangle_t *first = xcb_xfixes_fetch_region_rectangles(region.get());
    return std::any_of(first, first + xcb_xfixes_fetch_region_rectangles_length(region.get()),
                       [this](const xcb_rectangle_t &drawn) {
                           return m_area.intersects(QRect(drawn.x, drawn.y, drawn.width, drawn.height));
                       });
}

void ScreenWatcher::watchWindows(const std::vector<xcb_window_t> &windows)
{
    xcb_connection_t *const x = m_connection.get();
    std::erase_if(m_windowDamage, [&](const auto &watched) {
        const bool isGone = std::ranges::find(windows, watched.first) == windows.end();
        if (isGone) {
            xcb_damage_destroy(x, watched.second);
        }
        return isGone;
    });
    for (const xcb_window_t window : windows) {
        if (!m_windowDamage.contains(window)) {
            const xcb_damage_damage_t damage = xcb_generate_id(x);
            xcb_damage_create(x, damage, window, XCB_DAMAGE_REPORT_LEVEL_NON_EMPTY);
            m_windowDamage[window] = damage;
        }
    }
}

} // namespace zivra::desktop
