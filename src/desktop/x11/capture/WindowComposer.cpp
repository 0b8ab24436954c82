#include "desktop/x11/capture/WindowComposer.h"

#include "desktop/x11/Pipelined.h"

#include <xcb/composite.h>
#include <xcb/shape.h>
#include <xcb/xfixes.h>

#include <algorithm>
#include <utility>

namespace zivra::desktop {

namespace {

bool isIncluding(const ContentFilter &filter)
{
    return filter.kind == ContentFilter::Kind::DisplayIncludingWindows;
}

} // namespace

WindowComposer::WindowComposer(const XcbConnection &connection, ContentFilter filter, QRect area)
    : m_connection(connection),
      m_filter(std::move(filter)),
      m_area(area),
      m_pixmap(xcb_generate_id(connection.get())),
      m_target(xcb_generate_id(connection.get()))
{
    xcb_connection_t *const x = m_connection.get();
    readPictureFormats();
    xcb_create_pixmap(x, m_connection.screen().root_depth, m_pixmap, m_connection.root(),
                      static_cast<std::uint16_t>(area.width()), static_cast<std::uint16_t>(area.height()));
    xcb_render_create_picture(x, m_target, m_pixmap, m_formats[m_connection.screen().root_visual].format, 0,
                              nullptr);
    xcb_composite_redirect_subwindows(x, m_connection.root(), XCB_COMPOSITE_REDIRECT_AUTOMATIC);
    if (isIncluding(m_filter)) {
        for (const StackedWindow &window : stackedWindows(m_connection)) {
            if (isLetThrough(window) && !window.overridesRedirect) {
                m_recordedWindow = window.client;
            }
        }
    }
}

WindowComposer::~WindowComposer()
{
    xcb_render_free_picture(m_connection.get(), m_target);
    xcb_free_pixmap(m_connection.get(), m_pixmap);
    m_connection.flush();
}

void WindowComposer::readPictureFormats()
{
    const auto formats = m_connection.reply(xcb_render_query_pict_formats_reply,
                                            xcb_render_query_pict_formats(m_connection.get()));
    if (!formats) {
        return;
    }
    std::map<xcb_render_pictformat_t, bool> hasAlpha;
    for (auto info = xcb_render_query_pict_formats_formats_iterator(formats.get()); info.rem > 0;
         xcb_render_pictforminfo_next(&info)) {
        hasAlpha[info.data->id] = info.data->direct.alpha_mask != 0;
    }
    for (auto screen = xcb_render_query_pict_formats_screens_iterator(formats.get()); screen.rem > 0;
         xcb_render_pictscreen_next(&screen)) {
        for (auto depth = xcb_render_pictscreen_depths_iterator(screen.data); depth.rem > 0;
             xcb_render_pictdepth_next(&depth)) {
            for (auto visual = xcb_render_pictdepth_visuals_iterator(depth.data); visual.rem > 0;
                 xcb_render_pictvisual_next(&visual)) {
                m_formats[visual.data->visual] = {visual.data->format, hasAlpha[visual.data->format]};
            }
        }
    }
}

bool WindowComposer::isLetThrough(const StackedWindow &window) const
{
    const auto &listed = m_filter.windowIDs;
    const bool isListed = std::ranges::find(listed, window.client) != listed.end() ||
                          std::ranges::find(listed, window.topLevel) != listed.end();
    return isListed == isIncluding(m_filter);
}

bool WindowComposer::recordedWindowIsThere(const std::vector<StackedWindow> &windows)
{
    if (!m_recordedWindow) {
        return true;
    }
    const auto found = std::ranges::find(windows, *m_recordedWindow, &StackedWindow::client);
    m_lostWindow = found == windows.end();
    return !m_lostWindow && found->isViewable;
}

bool WindowComposer::compose()
{
    std::vector<StackedWindow> windows = stackedWindows(m_connection);
    if (!recordedWindowIsThere(windows)) {
        return false;
    }
    std::erase_if(
        windows, [this](const StackedWindow &window) { return !window.isViewable || !isLetThrough(window); });
    std::ranges::reverse(windows);

    drawBackground();
    m_shown.clear();
    const auto ask = [this](const StackedWindow &window) {
        return std::pair(xcb_get_geometry(m_connection.get(), window.topLevel),
                         xcb_get_window_attributes(m_connection.get(), window.topLevel));
    };
    forEachAnswer(windows, ask, [this](const StackedWindow &window, const auto &cookies) {
        const auto geometry = m_connection.reply(xcb_get_geometry_reply, cookies.first);
        const auto attributes = m_connection.reply(xcb_get_window_attributes_reply, cookies.second);
        if (geometry && attributes) {
            m_shown.push_back(window.topLevel);
            draw(window.topLevel, *geometry, attributes->visual);
        }
    });
    return true;
}

void WindowComposer::drawBackground()
{
    xcb_connection_t *const x = m_connection.get();
    const xcb_rectangle_t all{0, 0, static_cast<std::uint16_t>(m_area.width()),
                              static_cast<std::uint16_t>(m_area.height())};
    const xcb_render_color_t black{0, 0, 0, 0xffff};
    xcb_render_fill_rectangles(x, XCB_RENDER_PICT_OP_SRC, m_target, black, 1, &all);
    // Wallpaper programs leave their picture's number with the root window.
    const auto wallpaper = m_connection.value(m_connection.root(), m_connection.atom("_XROOTPMAP_ID"));
    if (isIncluding(m_filter) || !wallpaper) {
        return;
    }
    const xcb_render_picture_t picture = xcb_generate_id(x);
    const std::uint32_t repeat = XCB_RENDER_REPEAT_NORMAL;
    xcb_render_create_picture(x, picture, *wallpaper, m_formats[m_connection.screen().root_visual].format,
                              XCB_RENDER_CP_REPEAT, &repeat);
    xcb_render_composite(x, XCB_RENDER_PICT_OP_SRC, picture, XCB_NONE, m_target,
                         static_cast<std::int16_t>(m_area.x()), static_cast<std::int16_t>(m_area.y()), 0, 0,
                         0, 0, all.width, all.height);
    xcb_render_free_picture(x, picture);
}

void WindowComposer::draw(xcb_window_t window, const xcb_get_geometry_reply_t &geometry,
                          xcb_visualid_t visual)
{
    const int border = geometry.border_width;
    const QRect outline(geometry.x, geometry.y, geometry.width + 2 * border, geometry.height + 2 * border);
    const VisualFormat format = m_formats[visual];
    if (!outline.intersects(m_area) || format.format == 0) {
        return;
    }
    xcb_connection_t *const x = m_connection.get();
    // Named anew each time: a pixmap goes stale when its window is resized or mapped again.
    const xcb_pixmap_t pixmap = xcb_generate_id(x);
    xcb_composite_name_window_pixmap(x, window, pixmap);
    const xcb_render_picture_t picture = xcb_generate_id(x);
    xcb_render_create_picture(x, picture, pixmap, format.format, 0, nullptr);
    const xcb_xfixes_region_t shape = xcb_generate_id(x);
    xcb_xfixes_create_region_from_window(x, shape, window, XCB_SHAPE_SK_BOUNDING);
    xcb_xfixes_set_picture_clip_region(x, picture, shape, static_cast<std::int16_t>(border),
                                       static_cast<std::int16_t>(border));
    xcb_render_composite(x, format.hasAlpha ? XCB_RENDER_PICT_OP_OVER : XCB_RENDER_PICT_OP_SRC, picture,
                         XCB_NONE, m_target, 0, 0, 0, 0, static_cast<std::int16_t>(outline.x() - m_area.x()),
                         static_cast<std::int16_t>(outline.y() - m_area.y()),
                         static_cast<std::uint16_t>(outline.width()),
                         static_cast<std::uint16_t>(outline.height()));
    xcb_xfixes_destroy_region(x, shape);
    xcb_render_free_picture(x, picture);
    xcb_free_pixmap(x, pixmap);
}

} // namespace zivra::desktop
