#include "desktop/x11/X11Screens.h"

#include "desktop/x11/Monitors.h"

namespace zivra::desktop {

std::vector<Screen> X11Screens::screens() const
{
    const MonitorLayout layout(m_connection);
    std::vector<Screen> screens;
    for (const Monitor &monitor : layout.monitors()) {
        screens.push_back({.displayID = monitor.displayID,
                           .name = monitor.name,
                           .frame = layout.frame(monitor),
                           .backingScaleFactor = layout.scale(),
                           .visibleFrame = layout.visibleFrame(monitor)});
    }
    return screens;
}

QPointF X11Screens::mouseLocation() const
{
    const auto pointer = m_connection.reply(xcb_query_pointer_reply,
                                            xcb_query_pointer(m_connection.get(), m_connection.root()));
    return pointer ? MonitorLayout(m_connection).toPoints(QPoint(pointer->root_x, pointer->root_y))
                   : QPointF();
}

} // namespace zivra::desktop
