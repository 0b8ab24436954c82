#include "desktop/x11/Monitors.h"

#include "desktop/x11/Pipelined.h"
#include "desktop/x11/X11Scale.h"

#include <xcb/randr.h>

#include <algorithm>
#include <array>

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

/// What a dock has reserved along one edge of the root window.
struct Strut {
    int depth = 0; ///< pixels from the edge
    int start = 0; ///< first and last pixel along the edge
    int end = 0;
};

/// In the order of _NET_WM_STRUT_PARTIAL (EWMH 1.5): left, right, top, bottom.
using Struts = std::array<Strut, 4>;

Struts strutsFrom(const std::vector<std::uint32_t> &values)
{
    constexpr std::size_t kCount = 12;
    Struts struts;
    if (values.size() < kCount) {
        return struts;
    }
    for (std::size_t edge = 0; edge < struts.size(); ++edge) {
        const std::size_t range = struts.size() + 2 * edge;
        struts.at(edge) = {static_cast<int>(values[edge]), static_cast<int>(values[range]),
                           static_cast<int>(values[range + 1])};
    }
    return struts;
}

/// A strut counts for the monitors that its band, from the root's edge inwards, ends in.
QRect withoutStruts(const Struts &struts, QRect monitor, const QSize &root)
{
    const auto &[left, right, top, bottom] = struts;
    const auto reaches = [&monitor](const Strut &strut, const QRect &band) {
        return strut.depth > 0 && band.intersects(monitor);
    };
    const auto spanned = [](const Strut &strut) { return strut.end - strut.start + 1; };
    const QRect whole = monitor;
    if (reaches(left, {left.depth - 1, left.start, 1, spanned(left)})) {
        monitor.setLeft(std::max(monitor.left(), left.depth));
    }
    if (reaches(right, {root.width() - right.depth, right.start, 1, spanned(right)})) {
        monitor.setRight(std::min(monitor.right(), root.width() - right.depth - 1));
    }
    if (reaches(top, {top.start, top.depth - 1, spanned(top), 1})) {
        monitor.setTop(std::max(monitor.top(), top.depth));
    }
    if (reaches(bottom, {bottom.start, root.height() - bottom.depth, spanned(bottom), 1})) {
        monitor.setBottom(std::min(monitor.bottom(), root.height() - bottom.depth - 1));
    }
    return monitor.isValid() ? monitor : whole;
}

void leaveOutDocks(const XcbConnection &connection, std::vector<Monitor> &monitors)
{
    QRect root;
    for (Monitor &monitor : monitors) {
        monitor.visiblePixels = monitor.pixels;
        root |= monitor.pixels;
    }
    const xcb_atom_t atom = connection.atom("_NET_WM_STRUT_PARTIAL");
    const QSize size(root.right() + 1, root.bottom() + 1);
    forEachAnswer(
        connection.values(connection.root(), connection.atom("_NET_CLIENT_LIST")),
        [&](xcb_window_t window) { return connection.requestProperty(window, atom); },
        [&](xcb_window_t, xcb_get_property_cookie_t cookie) {
            const Struts struts = strutsFrom(connection.values(cookie));
            for (Monitor &monitor : monitors) {
                monitor.visiblePixels = withoutStruts(struts, monitor.visiblePixels, size);
            }
        });
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
    leaveOutDocks(connection, m_monitors);
}

QRectF MonitorLayout::toFrame(const Monitor &monitor, const QRect &pixels) const
{
    return {toPoints(pixels.topLeft(), monitor.pixels.topLeft()), QSizeF(pixels.size()) / m_scale};
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
