#include "desktop/x11/capture/CursorOverlay.h"

#include "desktop/threads/MonotonicTime.h"

#include <algorithm>
#include <utility>

namespace zivra::desktop {

namespace {

constexpr MediaTime kJumpsFollow = MediaTime::fromMilliseconds(2000);

/// Puts a colour with premultiplied alpha (0xAARRGGBB) over a pixel.
void blend(std::uint32_t colour, std::uint8_t *pixel)
{
    const std::uint32_t alpha = colour >> 24;
    for (unsigned channel = 0; channel < 3; ++channel) {
        const std::uint32_t above = (colour >> (8 * channel)) & 0xff;
        const std::uint32_t sum = above + (pixel[channel] * (255 - alpha) + 127) / 255;
        pixel[channel] = static_cast<std::uint8_t>(std::min(255U, sum));
    }
}

} // namespace

void CursorOverlay::note(ServerEvents::Kind event)
{
    m_hasMoved |= event == ServerEvents::Kind::Motion;
    m_hasNewImage |= event == ServerEvents::Kind::CursorImage;
}

bool CursorOverlay::mayHaveChanged() const
{
    return m_hasMoved || m_hasNewImage || monotonicTime() < m_jumpsUntil;
}

QRegion CursorOverlay::update(QPoint origin)
{
    const bool hasNewImage = std::exchange(m_hasNewImage, false);
    const bool wasHeardOf = std::exchange(m_hasMoved, false) || hasNewImage;
    const auto where = xcb_query_pointer(m_connection.get(), m_connection.root());
    if (hasNewImage) {
        m_image = m_connection.reply(xcb_xfixes_get_cursor_image_reply,
                                     xcb_xfixes_get_cursor_image(m_connection.get()));
    }
    const auto pointer = m_connection.reply(xcb_query_pointer_reply, where);
    const QRect before = m_bounds;
    m_bounds = QRect();
    if (pointer && m_image) {
        m_bounds = QRect(QPoint(pointer->root_x - m_image->xhot, pointer->root_y - m_image->yhot) - origin,
                         QSize(m_image->width, m_image->height));
    }
    if (m_bounds != before && !wasHeardOf) {
        m_jumpsUntil = monotonicTime() + kJumpsFollow;
    }
    return hasNewImage || m_bounds != before ? QRegion(before) + m_bounds : QRegion();
}

void CursorOverlay::draw(SharedImage &image) const
{
    const QRect visible = m_bounds & image.rect();
    if (visible.isEmpty()) {
        return;
    }
    const std::uint32_t *colours = xcb_xfixes_get_cursor_image_cursor_image(m_image.get());
    for (int y = visible.top(); y <= visible.bottom(); ++y) {
        const std::uint32_t *row = colours + std::ptrdiff_t{y - m_bounds.top()} * m_bounds.width();
        for (int x = visible.left(); x <= visible.right(); ++x) {
            blend(row[x - m_bounds.left()], image.pixel(x, y));
        }
    }
}

} // namespace zivra::desktop
