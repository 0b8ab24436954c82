#include "desktop/x11/X11ContentQuery.h"

#include "desktop/x11/Monitors.h"
#include "desktop/x11/WindowList.h"
#include "platform/PlatformError.h"

#include <QFile>

#include <algorithm>
#include <array>
#include <functional>

namespace zivra::desktop {

namespace {

QString processName(std::int64_t processID)
{
    QFile name(QStringLiteral("/proc/%1/comm").arg(processID));
    return name.open(QIODevice::ReadOnly) ? QString::fromUtf8(name.readAll().trimmed()) : QString();
}

/// The name of its windows' class is meant for people, that of the process may be an interpreter's.
std::optional<WindowOwner> ownerOf(const ListedWindow &window)
{
    if (!window.processID) {
        return std::nullopt;
    }
    const QString name = window.className.isEmpty() ? processName(*window.processID) : window.className;
    return WindowOwner{.processID = *window.processID, .name = name};
}

} // namespace

QFuture<ShareableContent> X11ContentQuery::shareableContent(bool excludingDesktopWindows,
                                                            bool onScreenWindowsOnly)
{
    const MonitorLayout layout(m_connection);
    ShareableContent content;
    for (const Monitor &monitor : layout.monitors()) {
        content.displays.push_back({.displayID = monitor.displayID, .frame = layout.frame(monitor)});
    }
    for (const ListedWindow &window : listWindows(m_connection)) {
        const bool isLeftOut =
            (excludingDesktopWindows && window.layer < 0) || (onScreenWindowsOnly && !window.isOnScreen);
        if (!isLeftOut) {
            content.windows.push_back({.windowID = window.window,
                                       .frame = layout.toPoints(window.pixels),
                                       .title = window.title,
                                       .layer = window.layer,
                                       .isOnScreen = window.isOnScreen,
                                       .owningApplication = ownerOf(window)});
        }
    }
    if (!m_connection.isAlive()) {
        return QtFuture::makeExceptionalFuture<ShareableContent>(std::make_exception_ptr(
            PlatformError(QStringLiteral("The connection to the X display is lost."))));
    }
    return QtFuture::makeReadyFuture(content);
}

void X11ContentQuery::activateApplication(std::int64_t processID)
{
    auto windows = listWindows(m_connection);
    std::stable_partition(windows.begin(), windows.end(), std::mem_fn(&ListedWindow::isOnScreen));
    const auto topmost = std::ranges::find_if(windows, [&](const ListedWindow &window) {
        return window.layer == 0 && window.processID == processID;
    });
    if (topmost != windows.end()) {
        activate(topmost->window);
    }
}

void X11ContentQuery::activate(xcb_window_t window) const
{
    const xcb_window_t root = m_connection.root();
    const xcb_atom_t request = m_connection.atom("_NET_ACTIVE_WINDOW");
    const auto supported = m_connection.values(root, m_connection.atom("_NET_SUPPORTED"));
    if (std::ranges::find(supported, request) != supported.end()) {
        constexpr std::uint32_t kFromPager = 2; // a user's own wish: the manager does not second-guess it
        xcb_client_message_event_t message{};
        message.response_type = XCB_CLIENT_MESSAGE;
        message.format = 32;
        message.window = window;
        message.type = request;
        message.data.data32[0] = kFromPager;
        message.data.data32[1] = XCB_CURRENT_TIME;
        constexpr std::uint32_t kToManager =
            XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
        xcb_send_event(m_connection.get(), 0, root, kToManager, reinterpret_cast<const char *>(&message));
    } else {
        constexpr std::array<std::uint32_t, 1> kAbove{XCB_STACK_MODE_ABOVE};
        xcb_configure_window(m_connection.get(), window, XCB_CONFIG_WINDOW_STACK_MODE, kAbove.data());
        xcb_set_input_focus(m_connection.get(), XCB_INPUT_FOCUS_PARENT, window, XCB_CURRENT_TIME);
    }
    m_connection.flush();
}

} // namespace zivra::desktop
