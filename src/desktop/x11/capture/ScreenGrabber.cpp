#include "desktop/x11/capture/ScreenGrabber.h"

#include <array>

namespace zivra::desktop {

ScreenGrabber::ScreenGrabber(const XcbConnection &connection, const ContentFilter &filter, QRect area)
    : m_connection(connection),
      m_area(area),
      m_image(connection, area.size())
{
    const bool isWholeScreen =
        filter.kind == ContentFilter::Kind::DisplayExcludingWindows && filter.windowIDs.empty();
    if (!isWholeScreen) {
        m_composer = std::make_unique<WindowComposer>(connection, filter, area);
    }
}

ScreenGrabber::~ScreenGrabber() = default;

std::vector<xcb_window_t> ScreenGrabber::shownWindows() const
{
    return m_composer ? m_composer->shownWindows() : std::vector<xcb_window_t>();
}

bool ScreenGrabber::grab()
{
    if (m_composer) {
        return m_composer->compose() && m_image.read(m_composer->picture(), {0, 0});
    }
    return m_image.read(m_connection.root(), m_area.topLeft()) || grabPartOfScreen();
}

/// The screen has become smaller than the area: what is outside of it is black.
bool ScreenGrabber::grabPartOfScreen()
{
    xcb_connection_t *const x = m_connection.get();
    const xcb_pixmap_t canvas = xcb_generate_id(x);
    const auto width = static_cast<std::uint16_t>(m_area.width());
    const auto height = static_cast<std::uint16_t>(m_area.height());
    xcb_create_pixmap(x, m_connection.screen().root_depth, canvas, m_connection.root(), width, height);
    const xcb_gcontext_t gc = xcb_generate_id(x);
    const std::array<std::uint32_t, 3> values{m_connection.screen().black_pixel,
                                              XCB_SUBWINDOW_MODE_INCLUDE_INFERIORS, 0};
    xcb_create_gc(x, gc, canvas, XCB_GC_FOREGROUND | XCB_GC_SUBWINDOW_MODE | XCB_GC_GRAPHICS_EXPOSURES,
                  values.data());
    const xcb_rectangle_t all{0, 0, width, height};
    xcb_poly_fill_rectangle(x, canvas, gc, 1, &all);
    xcb_copy_area(x, m_connection.root(), canvas, gc, static_cast<std::int16_t>(m_area.x()),
                  static_cast<std::int16_t>(m_area.y()), 0, 0, width, height);
    const bool isRead = m_image.read(canvas, {0, 0});
    xcb_free_gc(x, gc);
    xcb_free_pixmap(x, canvas);
    return isRead;
}

} // namespace zivra::desktop
