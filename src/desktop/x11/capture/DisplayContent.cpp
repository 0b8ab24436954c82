#include "desktop/x11/capture/DisplayContent.h"

#include "desktop/threads/MonotonicTime.h"
#include "desktop/x11/capture/WindowRedirection.h"

#include <algorithm>
#include <utility>

namespace zivra::desktop {

namespace {

/// How long a compositing manager may go on showing a window that is gone: its fade, and frames it is behind.
constexpr MediaTime kLinger = MediaTime::fromMilliseconds(500);
/// Pixels that a compositing manager may draw around a window: its shadow.
constexpr int kSurroundings = 32;

} // namespace

DisplayContent::DisplayContent(const XcbConnection &connection, QRect area, const ContentFilter &filter)
    : m_connection(connection),
      m_area(area),
      m_excluded(connection, filter),
      m_root(connection, area)
{
}

void DisplayContent::note(ServerEvents::Kind kind, const xcb_generic_event_t &event)
{
    if (kind == ServerEvents::Kind::Damage) {
        const auto &damage = reinterpret_cast<const xcb_damage_notify_event_t &>(event);
        m_root.damage().note(damage);
        if (m_composer) {
            m_composer->noteDamage(damage);
        }
    } else if (kind == ServerEvents::Kind::Structure) {
        m_excluded.note(event);
        m_areWindowsChanged |= !m_excluded.isEmpty();
        if (m_composer) {
            m_composer->noteStructure(event);
        }
    } else if (kind == ServerEvents::Kind::Displays) {
        m_isScreenChanged = true;
    } else if (kind == ServerEvents::Kind::Property) {
        const auto &property = reinterpret_cast<const xcb_property_notify_event_t &>(event);
        m_isDesktopChanged |= m_composer && property.atom == m_connection.atom("_XROOTPMAP_ID");
    }
}

bool DisplayContent::mayHaveChanged() const
{
    return m_areWindowsChanged || m_isDesktopChanged || m_isScreenChanged ||
           (m_composer ? m_composer->hasDamage() : m_root.damage().hasDamage());
}

QRegion DisplayContent::takeChanges()
{
    QRegion changed;
    if (std::exchange(m_isScreenChanged, false)) {
        m_root.measureScreen();
        changed += m_area;
    }
    if (std::exchange(m_areWindowsChanged, false)) {
        changed += followWindows();
    }
    if (std::exchange(m_isDesktopChanged, false) && m_composer) {
        m_composer->readDesktop();
        changed += m_area;
    }
    if (m_composer && m_hidden.empty() && monotonicTime() > m_lastSeen + kLinger) {
        m_composer.reset();
        changed += m_area;
    }
    const QRegion drawn =
        m_composer ? m_composer->takeDamage().translated(-m_area.topLeft()) : m_root.takeDamage();
    return changed.translated(-m_area.topLeft()) + drawn;
}

/// Finds out whether windows to be left out are there, and which others are.
QRegion DisplayContent::followWindows()
{
    std::vector<TopLevel> stack = topLevels(m_connection);
    const bool mustHide = hidesOne(stack);
    if (mustHide) {
        m_lastSeen = monotonicTime();
    }
    if (m_composer) {
        return m_composer->setWindows(shown(stack), m_area.topLeft());
    }
    if (mustHide) {
        beginComposing(stack);
        return m_area;
    }
    return {};
}

/// Also learns under which top levels the windows to be left out are now.
bool DisplayContent::hidesOne(const std::vector<TopLevel> &stack)
{
    const auto tops = m_excluded.findTopLevels();
    const QRect near = m_area.adjusted(-kSurroundings, -kSurroundings, kSurroundings, kSurroundings);
    m_hidden.clear();
    for (const TopLevel &each : stack) {
        if (tops.contains(each.window) && each.isViewable && each.outline.intersects(near)) {
            m_hidden.insert(each.window);
        }
    }
    return !m_hidden.empty();
}

std::vector<TopLevel> DisplayContent::shown(const std::vector<TopLevel> &stack) const
{
    std::vector<TopLevel> windows;
    std::ranges::copy_if(stack, std::back_inserter(windows), [this](const TopLevel &each) {
        return each.isViewable && each.outline.intersects(m_area) && !m_hidden.contains(each.window);
    });
    return windows;
}

void DisplayContent::beginComposing(const std::vector<TopLevel> &stack)
{
    m_composer =
        std::make_unique<WindowComposer>(m_connection, m_area.size(), WindowComposer::Background::Wallpaper);
    if (!std::exchange(m_isRedirected, true)) {
        redirectAllWindows(m_connection, m_hidden);
    }
    static_cast<void>(m_composer->setWindows(shown(stack), m_area.topLeft()));
}

bool DisplayContent::read(SharedImage &image, const QRegion &region)
{
    return m_composer ? m_composer->read(image, region.translated(m_area.topLeft()))
                      : m_root.read(image, region);
}

bool DisplayContent::mustReadAgain()
{
    // Only what composes the picture leaves windows out; one may have appeared while the screen was read.
    if (m_composer || !m_areWindowsChanged) {
        return false;
    }
    m_areWindowsChanged = false;
    const bool mustHide = hidesOne(topLevels(m_connection));
    m_areWindowsChanged = mustHide;
    return mustHide;
}

} // namespace zivra::desktop
