#include "desktop/x11/Monitors.h"

#include "desktop/x11/X11Scale.h"

#include <xcb/randr.h>

#include <algorithm>

namespace zivra::desktop {

namespace {

/// Monitors came with RandR 1.5.
bool hasMonitors(const XcbConnection &connection)
{
    if (!connection.hasExtension(xcb_randr_id)) {
        return false;
    }
    const auto version =
        connection.reply(xcb_randr_query_version_reply, xcb_randr_query_version(connection.get(), 1, 5));
    return version && (version->major_version > 1 || version->minor_version >= 5);
}

QString nameOf(const XcbConnection &connection, xcb_atom_t atom)
{
    const auto name = connection.reply(xcb_get_atom_name_reply, xcb_get_atom_name(connection.get(), atom));
    return name ? QString::fromUtf8(xcb_get_atom_name_name(name.get()),
                                    xcb_get_atom_name_name_length(name.get()))
                : QString();
}

std::vector<Monitor> activeMonitors(const XcbConnection &connection)
{
    std::vector<Monitor> monitors;
    const auto answer = connection.reply(xcb_randr_get_monitors_reply,
                                         xcb_randr_get_monitors(connection.get(), connection.root(), 1));
    if (!answer) {
        return monitors;
    }
    auto each = xcb_randr_get_monitors_monitors_iterator(answer.get());
    for (; each.rem > 0; xcb_randr_monitor_info_next(&each)) {
        const auto &info = *each.data;
        const bool hasOutput = xcb_randr_monitor_info_outputs_length(&info) > 0;
        Monitor monitor{
            .displayID = hasOutput ? *xcb_randr_monitor_info_outputs(&info) : connection.root(),
            .name = nameOf(connection, info.name),
            .pixels = QRect(info.x, info.y, info.width, info.height),
        };
        monitors.insert(info.primary != 0 ? monitors.begin() : monitors.end(), std::move(monitor));
    }
    return monitors;
}

std::vector<Monitor> wholeRoot(const XcbConnection &connection)
{
    const auto geometry =
        connection.reply(xcb_get_geometry_reply, xcb_get_geometry(connection.get(), connection.root()));
    if (!geometry) {
        return {};
    }
    return {{.displayID = connection.root(),
             .name = QStringLiteral("screen"),
             .pixels = QRect(0, 0, geometry->width, geometry->height)}};
}

qint64 area(const QRect &rectangle)
{
    return rectangle.isEmpty() ? 0 : qint64{rectangle.width()} * rectangle.height();
}

} // namespace

MonitorLayout::MonitorLayout(const XcbConnection &connection) : m_scale(pixelsPerPoint(connection))
{
    if (hasMonitors(connection)) {
        m_monitors = activeMonitors(connection);
    }
    if (m_monitors.empty()) {
        m_monitors = wholeRoot(connection);
    }
}

QRectF MonitorLayout::frame(const Monitor &monitor) const
{
    return {QPointF(monitor.pixels.topLeft()), QSizeF(monitor.pixels.size()) / m_scale};
}

QPointF MonitorLayout::toPoints(const QPoint &pixels, const QPoint &displayOrigin) const
{
    return QPointF(displayOrigin) + QPointF(pixels - displayOrigin) / m_scale;
}

QPointF MonitorLayout::toPoints(const QPoint &pixels) const
{
    const auto around = std::ranges::find_if(
        m_monitors, [&](const Monitor &monitor) { return monitor.pixels.contains(pixels); });
    return toPoints(pixels, around != m_monitors.end() ? around->pixels.topLeft() : QPoint());
}

QRectF MonitorLayout::toPoints(const QRect &pixels) const
{
    const auto shown = [&](const Monitor &monitor) { return area(monitor.pixels & pixels); };
    const auto most = std::ranges::max_element(m_monitors, {}, shown);
    const QPoint origin = most != m_monitors.end() ? most->pixels.topLeft() : QPoint();
    return {toPoints(pixels.topLeft(), origin), QSizeF(pixels.size()) / m_scale};
}

} // namespace zivra::desktop
