#include "desktop/x11/panels/PanelStack.h"

#include "desktop/x11/Pipelined.h"

#include <algorithm>
#include <utility>

namespace zivra::desktop {

namespace {

constexpr qint64 kInterval = 100; // milliseconds

bool isRestacking(const xcb_generic_event_t &event)
{
    constexpr int kSentByClient = 0x80;
    switch (event.response_type & ~kSentByClient) {
    case XCB_MAP_NOTIFY:
    case XCB_REPARENT_NOTIFY:
    case XCB_CONFIGURE_NOTIFY:
    case XCB_CIRCULATE_NOTIFY:
        return true;
    default:
        return false;
    }
}

} // namespace

PanelStack::PanelStack(std::function<std::vector<xcb_window_t>()> dialogs)
    : m_dialogs(std::move(dialogs)),
      m_notifier(m_connection.fileDescriptor(), QSocketNotifier::Read)
{
    m_soon.setSingleShot(true);
    connect(&m_soon, &QTimer::timeout, this, &PanelStack::restack);
    connect(&m_notifier, &QSocketNotifier::activated, this, &PanelStack::readEvents);
}

void PanelStack::add(xcb_window_t window, int level)
{
    remove(window);
    const auto above = std::ranges::upper_bound(m_panels, level, {}, &Panel::level);
    m_panels.insert(above, {window, level});
    listen(true);
    restack();
}

void PanelStack::remove(xcb_window_t window)
{
    std::erase_if(m_panels, [window](const Panel &panel) { return panel.window == window; });
    listen(!m_panels.empty());
}

void PanelStack::listen(bool listens)
{
    const std::uint32_t mask = listens ? XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY : XCB_EVENT_MASK_NO_EVENT;
    xcb_change_window_attributes(m_connection.get(), m_connection.root(), XCB_CW_EVENT_MASK, &mask);
    m_connection.flush();
}

void PanelStack::readEvents()
{
    bool hasChanged = false;
    while (const auto event = m_connection.nextEvent()) {
        hasChanged |= isRestacking(*event);
    }
    m_notifier.setEnabled(m_connection.isAlive());
    if (hasChanged && !m_panels.empty() && !m_soon.isActive()) {
        const qint64 left = m_sinceLast.isValid() ? kInterval - m_sinceLast.elapsed() : 0;
        m_soon.start(static_cast<int>(std::max<qint64>(left, 0)));
    }
}

void PanelStack::restack()
{
    const std::vector<xcb_window_t> windows = wanted();
    if (isInOrder(windows)) {
        return;
    }
    m_sinceLast.start();
    constexpr std::uint32_t kAbove = XCB_STACK_MODE_ABOVE;
    for (const xcb_window_t window : windows) {
        xcb_configure_window(m_connection.get(), window, XCB_CONFIG_WINDOW_STACK_MODE, &kAbove);
    }
    m_connection.flush();
    readEvents(); // replies may have brought events in that the notifier does not see
}

std::vector<xcb_window_t> PanelStack::wanted() const
{
    std::vector<xcb_window_t> windows;
    std::ranges::transform(m_panels, std::back_inserter(windows), &Panel::window);
    const auto above = std::ranges::upper_bound(m_panels, kDialogLevel, {}, &Panel::level);
    const std::vector<xcb_window_t> dialogs = m_dialogs();
    windows.insert(windows.begin() + (above - m_panels.begin()), dialogs.begin(), dialogs.end());
    return windows;
}

bool PanelStack::isInOrder(const std::vector<xcb_window_t> &wanted) const
{
    const auto tree =
        m_connection.reply(xcb_query_tree_reply, xcb_query_tree(m_connection.get(), m_connection.root()));
    if (!tree) {
        return true;
    }
    const auto *first = xcb_query_tree_children(tree.get());
    const auto *const end = first + xcb_query_tree_children_length(tree.get());
    auto next = wanted.begin();
    for (const auto *each = std::find_first_of(first, end, wanted.begin(), wanted.end()); each != end;
         ++each) {
        if (next != wanted.end() && *each == *next) {
            ++next;
        } else if (std::ranges::find(wanted, *each) != wanted.end() || covers(*each)) {
            return false;
        }
    }
    return true;
}

bool PanelStack::covers(xcb_window_t window) const
{
    // The server's own windows are not stacked with the others: a compositing manager draws into one.
    const std::uint32_t client = window & ~xcb_get_setup(m_connection.get())->resource_id_mask;
    if (client == 0) {
        return false;
    }
    const auto attributes = m_connection.reply(xcb_get_window_attributes_reply,
                                               xcb_get_window_attributes(m_connection.get(), window));
    return attributes && attributes->_class == XCB_WINDOW_CLASS_INPUT_OUTPUT &&
           attributes->map_state == XCB_MAP_STATE_VIEWABLE;
}

} // namespace zivra::desktop
