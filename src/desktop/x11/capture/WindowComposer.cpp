#include "desktop/x11/capture/WindowComposer.h"

#include "desktop/x11/capture/RowBands.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace zivra::desktop {

namespace {

xcb_rectangle_t rectangle(const QRect &pixels)
{
    return {static_cast<std::int16_t>(pixels.x()), static_cast<std::int16_t>(pixels.y()),
            static_cast<std::uint16_t>(pixels.width()), static_cast<std::uint16_t>(pixels.height())};
}

const TopLevel *find(const std::vector<TopLevel> &windows, xcb_window_t window)
{
    const auto found = std::ranges::find(windows, window, &TopLevel::window);
    return found != windows.end() ? &*found : nullptr;
}

/// The windows of `windows` that are in `others` too, in their order.
std::vector<xcb_window_t> common(const std::vector<TopLevel> &windows, const std::vector<TopLevel> &others)
{
    std::vector<xcb_window_t> order;
    for (const TopLevel &each : windows) {
        if (find(others, each.window) != nullptr) {
            order.push_back(each.window);
        }
    }
    return order;
}

QRegion outlines(const std::vector<TopLevel> &windows)
{
    QRegion region;
    for (const TopLevel &window : windows) {
        region += window.outline;
    }
    return region;
}

} // namespace

WindowComposer::WindowComposer(const XcbConnection &connection, QSize size, Background background)
    : m_connection(connection),
      m_size(size),
      m_background(background),
      m_pixmap(xcb_generate_id(connection.get())),
      m_target(xcb_generate_id(connection.get()))
{
    xcb_connection_t *const server = m_connection.get();
    const xcb_screen_t &screen = m_connection.screen();
    readPictureFormats();
    xcb_create_pixmap(server, screen.root_depth, m_pixmap, screen.root,
                      static_cast<std::uint16_t>(size.width()), static_cast<std::uint16_t>(size.height()));
    xcb_render_create_picture(server, m_target, m_pixmap, m_formats[screen.root_visual].format, 0, nullptr);
    readDesktop();
}

WindowComposer::~WindowComposer()
{
    m_layers.clear();
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

void WindowComposer::readDesktop()
{
    const auto owner =
        m_connection.reply(xcb_get_selection_owner_reply,
                           xcb_get_selection_owner(m_connection.get(), m_connection.atom("_NET_WM_CM_S0")));
    m_hasCompositingManager = owner && owner->owner != XCB_WINDOW_NONE;
    m_wallpaper =
        m_connection.value(m_connection.root(), m_connection.atom("_XROOTPMAP_ID")).value_or(XCB_NONE);
}

void WindowComposer::noteStructure(const xcb_generic_event_t &event)
{
    constexpr int kSentByClient = 0x80;
    if ((event.response_type & ~kSentByClient) == XCB_MAP_NOTIFY) {
        m_shownAnew.insert(reinterpret_cast<const xcb_map_notify_event_t &>(event).window);
    }
}

void WindowComposer::noteDamage(const xcb_damage_notify_event_t &event)
{
    if (const auto layer = m_layers.find(event.drawable); layer != m_layers.end()) {
        layer->second->damage().note(event);
    }
}

bool WindowComposer::hasDamage() const
{
    return std::ranges::any_of(m_layers, [](const auto &each) { return each.second->damage().hasDamage(); });
}

QRegion WindowComposer::setWindows(const std::vector<TopLevel> &windows, QPoint origin)
{
    QRegion changed = changeOf(windows);
    if (origin != std::exchange(m_origin, origin)) {
        changed += QRect(origin, m_size);
    }
    std::erase_if(m_layers, [&](const auto &each) { return find(windows, each.first) == nullptr; });
    requestPixels(windows);
    m_windows = windows;
    m_shownAnew.clear();
    return changed;
}

void WindowComposer::requestPixels(const std::vector<TopLevel> &windows)
{
    for (const TopLevel &each : windows) {
        const PictureFormat format = m_formats[each.visual];
        if (format.format != XCB_NONE) {
            auto &layer = m_layers[each.window];
            if (!layer) {
                layer = std::make_unique<WindowLayer>(m_connection, each, format);
            }
            layer->requestPixels(each);
        }
    }
    for (const auto &[window, layer] : m_layers) {
        layer->receivePixels();
    }
}

QRegion WindowComposer::changeOf(const std::vector<TopLevel> &windows) const
{
    QRegion changed;
    for (const TopLevel &before : m_windows) {
        const TopLevel *now = find(windows, before.window);
        if (now == nullptr || *now != before || m_shownAnew.contains(before.window)) {
            changed += before.outline;
            changed += now != nullptr ? now->outline : QRect();
        }
    }
    for (const TopLevel &now : windows) {
        if (find(m_windows, now.window) == nullptr) {
            changed += now.outline;
        }
    }
    return common(windows, m_windows) == common(m_windows, windows) ? changed : changed + outlines(windows);
}

QRegion WindowComposer::takeDamage()
{
    for (const auto &[window, layer] : m_layers) {
        layer->damage().request();
    }
    QRegion drawn;
    for (const auto &[window, layer] : m_layers) {
        drawn += layer->takeDamage();
    }
    return drawn;
}

bool WindowComposer::read(SharedImage &image, const QRegion &region)
{
    const QRegion local = region.translated(-m_origin) & image.rect();
    if (local.isEmpty()) {
        return true;
    }
    draw(local);
    return std::ranges::all_of(rowBands(local), [&](const RowBand &band) {
        return image.readRows(m_pixmap, {0, 0}, image.rect(), band.top, band.count);
    });
}

void WindowComposer::draw(const QRegion &region)
{
    std::vector<xcb_rectangle_t> clip;
    std::ranges::transform(region, std::back_inserter(clip), rectangle);
    xcb_render_set_picture_clip_rectangles(m_connection.get(), m_target, 0, 0,
                                           static_cast<std::uint32_t>(clip.size()), clip.data());
    drawBackground();
    for (const TopLevel &each : m_windows) {
        const auto layer = m_layers.find(each.window);
        if (layer != m_layers.end() &&
            region.intersects(layer->second->window().outline.translated(-m_origin))) {
            layer->second->draw(m_target, m_origin, m_hasCompositingManager);
        }
    }
}

void WindowComposer::drawBackground()
{
    xcb_connection_t *const server = m_connection.get();
    const xcb_rectangle_t all = rectangle({QPoint(0, 0), m_size});
    xcb_render_fill_rectangles(server, XCB_RENDER_PICT_OP_SRC, m_target, {0, 0, 0, 0xffff}, 1, &all);
    if (m_background == Background::Black || m_wallpaper == XCB_NONE) {
        return;
    }
    const xcb_render_picture_t wallpaper = xcb_generate_id(server);
    const std::uint32_t repeat = XCB_RENDER_REPEAT_NORMAL;
    xcb_render_create_picture(server, wallpaper, m_wallpaper,
                              m_formats[m_connection.screen().root_visual].format, XCB_RENDER_CP_REPEAT,
                              &repeat);
    xcb_render_composite(server, XCB_RENDER_PICT_OP_SRC, wallpaper, XCB_NONE, m_target,
                         static_cast<std::int16_t>(m_origin.x()), static_cast<std::int16_t>(m_origin.y()), 0,
                         0, 0, 0, all.width, all.height);
    xcb_render_free_picture(server, wallpaper);
}

} // namespace zivra::desktop
