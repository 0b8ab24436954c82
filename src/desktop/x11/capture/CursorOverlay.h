#pragma once

#include "desktop/x11/capture/ServerEvents.h"
#include "desktop/x11/capture/SharedImage.h"
#include "platform/MediaTime.h"

#include <QRect>
#include <QRegion>

#include <xcb/xfixes.h>

namespace zivra::desktop {

/// Draws the mouse cursor, which is no part of what the server lets us read.
///
/// A mouse that a hand moves is heard of. One that a program moves is not, and found at the next look; it
/// then is looked at for a while, since more such jumps are likely to follow.
class CursorOverlay {
public:
    explicit CursorOverlay(const XcbConnection &connection) : m_connection(connection) {}

    void note(ServerEvents::Kind event);
    [[nodiscard]] bool mayHaveChanged() const;
    /// Asks the server for the cursor as it is now, for a picture whose top left is at `origin` of the root
    /// window. Returns what differs, in the picture's pixels.
    [[nodiscard]] QRegion update(QPoint origin);
    /// Where it is drawn, in the picture's pixels.
    [[nodiscard]] QRect bounds() const { return m_bounds; }
    void draw(SharedImage &image) const;

private:
    const XcbConnection &m_connection;
    bool m_hasMoved = true;
    bool m_hasNewImage = true;
    MediaTime m_jumpsUntil = MediaTime::zero();
    XcbOwned<xcb_xfixes_get_cursor_image_reply_t> m_image;
    QRect m_bounds;
};

} // namespace zivra::desktop
