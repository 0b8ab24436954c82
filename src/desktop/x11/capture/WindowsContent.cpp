#include "desktop/x11/capture/WindowsContent.h"

#include "desktop/x11/Pipelined.h"
#include "platform/PlatformError.h"

#include <xcb/composite.h>

#include <algorithm>
#include <utility>

namespace zivra::desktop {

WindowsContent::WindowsContent(const XcbConnection &connection, QRect area,
                               const std::vector<std::uint32_t> &windows)
    : m_connection(connection),
      m_origin(area.topLeft()),
      m_composer(connection, area.size(), WindowComposer::Background::Black)
{
    findMembers(windows);
}

void WindowsContent::findMembers(const std::vector<std::uint32_t> &windows)
{
    // Frames are the root's children; a window in a frame tells of its end only to those who ask.
    const std::uint32_t mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    forEachAnswer(
        windows,
        [&](xcb_window_t window) {
            xcb_change_window_attributes(m_connection.get(), window, XCB_CW_EVENT_MASK, &mask);
            return xcb_get_window_attributes(m_connection.get(), window);
        },
        [&](xcb_window_t window, xcb_get_window_attributes_cookie_t cookie) {
            const auto attributes = m_connection.reply(xcb_get_window_attributes_reply, cookie);
            m_members.push_back({.window = window,
                                 .isManaged = attributes && attributes->override_redirect == 0,
                                 .isGone = !attributes});
        });
}

void WindowsContent::note(ServerEvents::Kind kind, const xcb_generic_event_t &event)
{
    if (kind == ServerEvents::Kind::Damage) {
        m_composer.noteDamage(reinterpret_cast<const xcb_damage_notify_event_t &>(event));
    } else if (kind == ServerEvents::Kind::Structure) {
        m_areWindowsChanged = true;
        m_composer.noteStructure(event);
    }
}

bool WindowsContent::mayHaveChanged() const
{
    return m_areWindowsChanged || (!m_isHeld && m_composer.hasDamage());
}

QRegion WindowsContent::takeChanges()
{
    QRegion changed;
    if (std::exchange(m_areWindowsChanged, false)) {
        changed += followWindows();
    }
    changed += m_composer.takeDamage();
    return changed.translated(-m_origin);
}

QRegion WindowsContent::followWindows()
{
    std::vector<std::uint32_t> windows;
    std::ranges::transform(m_members, std::back_inserter(windows), &Member::window);
    const auto tops = topLevelsOf(m_connection, windows);
    for (std::size_t index = 0; index < m_members.size(); ++index) {
        m_members[index].isGone |= tops[index] == XCB_WINDOW_NONE;
    }
    if (m_connection.isAlive() && std::ranges::all_of(m_members, &Member::isGone)) {
        throw PlatformError(QStringLiteral("The window being recorded was closed."));
    }
    m_isHeld = isFollowedHidden();
    if (m_isHeld) {
        return {};
    }
    std::vector<TopLevel> shown = topLevels(m_connection);
    follow(shown, tops);
    std::erase_if(shown, [&](const TopLevel &each) {
        return !each.isViewable || std::ranges::find(tops, each.window) == tops.end();
    });
    redirect(shown);
    return m_composer.setWindows(shown, m_origin);
}

const WindowsContent::Member *WindowsContent::followed() const
{
    const auto isThere = [](const Member &member) { return member.isManaged && !member.isGone; };
    const auto found = std::ranges::find_if(m_members, isThere);
    return found != m_members.end() ? &*found : nullptr;
}

/// Asks for the window itself: managers hide it before its frame, which then is without a picture.
bool WindowsContent::isFollowedHidden() const
{
    const Member *member = followed();
    if (member == nullptr) {
        return false;
    }
    const auto attributes = m_connection.reply(xcb_get_window_attributes_reply,
                                               xcb_get_window_attributes(m_connection.get(), member->window));
    return !attributes || attributes->map_state != XCB_MAP_STATE_VIEWABLE;
}

/// Keeps the followed window at the same place of the picture.
void WindowsContent::follow(const std::vector<TopLevel> &stack, const std::vector<xcb_window_t> &tops)
{
    const Member *member = followed();
    if (member == nullptr) {
        return;
    }
    const auto top = std::ranges::find(stack, tops[static_cast<std::size_t>(member - m_members.data())],
                                       &TopLevel::window);
    if (top != stack.end()) {
        const QPoint corner = top->outline.topLeft();
        m_offset = m_offset.value_or(m_origin - corner);
        m_origin = corner + *m_offset;
    }
}

bool WindowsContent::mustReadAgain()
{
    m_isHeld = m_areWindowsChanged && isFollowedHidden();
    return false;
}

void WindowsContent::redirect(const std::vector<TopLevel> &windows)
{
    for (const TopLevel &each : windows) {
        if (m_redirected.insert(each.window).second) {
            xcb_composite_redirect_window(m_connection.get(), each.window, XCB_COMPOSITE_REDIRECT_AUTOMATIC);
        }
    }
}

bool WindowsContent::read(SharedImage &image, const QRegion &region)
{
    return m_composer.read(image, region.translated(m_origin));
}

} // namespace zivra::desktop
