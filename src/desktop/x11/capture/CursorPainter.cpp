#include "desktop/x11/capture/CursorPainter.h"

#include <xcb/xfixes.h>

#include <algorithm>

namespace zivra::desktop {

namespace {

/// Puts one channel of a premultiplied colour over another.
std::uint8_t over(std::uint32_t colour, std::uint32_t alpha, std::uint8_t beneath)
{
    return static_cast<std::uint8_t>(std::min(255U, colour + (beneath * (255 - alpha) + 127) / 255));
}

} // namespace

void paintCursor(const XcbConnection &connection, SharedImage &image, QPoint origin)
{
    const auto cursor =
        connection.reply(xcb_xfixes_get_cursor_image_reply, xcb_xfixes_get_cursor_image(connection.get()));
    if (!cursor) {
        return;
    }
    const std::uint32_t *pixels = xcb_xfixes_get_cursor_image_cursor_image(cursor.get());
    const QPoint corner = QPoint(cursor->x - cursor->xhot, cursor->y - cursor->yhot) - origin;
    const QRect visible =
        QRect(corner, QSize(cursor->width, cursor->height)).intersected(QRect({0, 0}, image.size()));
    for (int y = visible.top(); y <= visible.bottom(); ++y) {
        for (int x = visible.left(); x <= visible.right(); ++x) {
            const std::uint32_t colour = pixels[(y - corner.y()) * cursor->width + (x - corner.x())];
            const std::uint32_t alpha = colour >> 24;
            std::uint8_t *target = image.data() + y * image.stride() + x * 4;
            for (unsigned channel = 0; channel < 3; ++channel) {
                target[channel] = over((colour >> (8 * channel)) & 0xff, alpha, target[channel]);
            }
        }
    }
}

} // namespace zivra::desktop
