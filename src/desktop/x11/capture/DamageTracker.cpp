#include "desktop/x11/capture/DamageTracker.h"

#include <utility>

namespace zivra::desktop {

namespace {

/// Pixels; a power of two. Keeps regions of text and the like small and falls on an encoder's macroblocks.
constexpr int kBlock = 16;

QRect coarsened(const xcb_rectangle_t &drawn)
{
    const int left = drawn.x & -kBlock;
    const int top = drawn.y & -kBlock;
    const int right = (drawn.x + drawn.width + kBlock - 1) & -kBlock;
    const int bottom = (drawn.y + drawn.height + kBlock - 1) & -kBlock;
    return {left, top, right - left, bottom - top};
}

} // namespace

DamageTracker::DamageTracker(const XcbConnection &connection, xcb_window_t window)
    : m_connection(connection),
      m_damage(xcb_generate_id(connection.get())),
      m_region(xcb_generate_id(connection.get()))
{
    xcb_damage_create(m_connection.get(), m_damage, window, XCB_DAMAGE_REPORT_LEVEL_NON_EMPTY);
    xcb_xfixes_create_region(m_connection.get(), m_region, 0, nullptr);
}

DamageTracker::~DamageTracker()
{
    if (m_asked) {
        xcb_discard_reply(m_connection.get(), m_asked->sequence);
    }
    xcb_damage_destroy(m_connection.get(), m_damage);
    xcb_xfixes_destroy_region(m_connection.get(), m_region);
}

void DamageTracker::request()
{
    if (std::exchange(m_hasDamage, false)) {
        xcb_damage_subtract(m_connection.get(), m_damage, XCB_NONE, m_region);
        m_asked = xcb_xfixes_fetch_region(m_connection.get(), m_region);
    }
}

QRegion DamageTracker::answer()
{
    const auto cookie = std::exchange(m_asked, std::nullopt);
    const auto answer = cookie ? m_connection.reply(xcb_xfixes_fetch_region_reply, *cookie) : nullptr;
    QRegion drawn;
    if (answer) {
        const xcb_rectangle_t *first = xcb_xfixes_fetch_region_rectangles(answer.get());
        for (int index = 0; index < xcb_xfixes_fetch_region_rectangles_length(answer.get()); ++index) {
            drawn += coarsened(first[index]);
        }
    }
    return drawn;
}

} // namespace zivra::desktop
