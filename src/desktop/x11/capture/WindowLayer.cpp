#include "desktop/x11/capture/WindowLayer.h"

#include <xcb/composite.h>
#include <xcb/shape.h>

#include <utility>

namespace zivra::desktop {

WindowLayer::WindowLayer(const XcbConnection &connection, const TopLevel &window, PictureFormat format)
    : m_connection(connection),
      m_window(window),
      m_format(format),
      m_damage(connection, window.window)
{
}

WindowLayer::~WindowLayer()
{
    release();
}

void WindowLayer::release()
{
    if (m_pixmap != XCB_NONE) {
        xcb_render_free_picture(m_connection.get(), m_picture);
        xcb_free_pixmap(m_connection.get(), std::exchange(m_pixmap, XCB_NONE));
    }
}

void WindowLayer::requestPixels(const TopLevel &window)
{
    m_namedWindow = window;
    m_named = xcb_generate_id(m_connection.get());
    m_naming = xcb_composite_name_window_pixmap_checked(m_connection.get(), window.window, m_named);
}

void WindowLayer::receivePixels()
{
    const xcb_pixmap_t named = std::exchange(m_named, XCB_NONE);
    if (named == XCB_NONE || m_connection.check(m_naming)) {
        return;
    }
    release();
    m_window = m_namedWindow;
    m_pixmap = named;
    m_picture = xcb_generate_id(m_connection.get());
    xcb_render_create_picture(m_connection.get(), m_picture, m_pixmap, m_format.format, 0, nullptr);
}

QRegion WindowLayer::takeDamage()
{
    const QPoint corner = m_window.outline.topLeft() + QPoint(m_window.border, m_window.border);
    return m_damage.answer().translated(corner) & m_window.outline;
}

void WindowLayer::draw(xcb_render_picture_t target, QPoint origin, bool isTranslucent) const
{
    if (m_pixmap == XCB_NONE) {
        return;
    }
    xcb_connection_t *const server = m_connection.get();
    const auto border = static_cast<std::int16_t>(m_window.border);
    const xcb_xfixes_region_t shape = xcb_generate_id(server);
    xcb_xfixes_create_region_from_window(server, shape, m_window.window, XCB_SHAPE_SK_BOUNDING);
    xcb_xfixes_set_picture_clip_region(server, m_picture, shape, border, border);
    xcb_xfixes_destroy_region(server, shape);
    const bool blends = isTranslucent && m_format.hasAlpha;
    const QPoint corner = m_window.outline.topLeft() - origin;
    xcb_render_composite(server, blends ? XCB_RENDER_PICT_OP_OVER : XCB_RENDER_PICT_OP_SRC, m_picture,
                         XCB_NONE, target, 0, 0, 0, 0, static_cast<std::int16_t>(corner.x()),
                         static_cast<std::int16_t>(corner.y()),
                         static_cast<std::uint16_t>(m_window.outline.width()),
                         static_cast<std::uint16_t>(m_window.outline.height()));
}

} // namespace zivra::desktop
