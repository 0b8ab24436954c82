#include "desktop/x11/capture/RootView.h"

#include "desktop/x11/capture/RowBands.h"

#include <algorithm>

namespace zivra::desktop {

RootView::RootView(const XcbConnection &connection, QRect area)
    : m_connection(connection),
      m_area(area),
      m_damage(connection, connection.root())
{
    measureScreen();
}

QRegion RootView::takeDamage()
{
    m_damage.request();
    return m_damage.answer().translated(-m_area.topLeft());
}

void RootView::measureScreen()
{
    const auto geometry =
        m_connection.reply(xcb_get_geometry_reply, xcb_get_geometry(m_connection.get(), m_connection.root()));
    m_screen = geometry ? QRect(0, 0, geometry->width, geometry->height) : QRect();
}

bool RootView::read(SharedImage &image, const QRegion &region)
{
    const QRect readable = m_screen.translated(-m_area.topLeft());
    return std::ranges::all_of(rowBands(region & image.rect()), [&](const RowBand &band) {
        return image.readRows(m_connection.root(), m_area.topLeft(), readable, band.top, band.count);
    });
}

} // namespace zivra::desktop
