#pragma once

#include "desktop/x11/capture/SharedImage.h"
#include "platform/MediaTime.h"

#include <QPoint>
#include <QRegion>

#include <vector>

namespace zivra::desktop {

/// A ring around the place of each mouse press, which fades away.
class ClickOverlay {
public:
    /// `scale`: pixels a point.
    explicit ClickOverlay(double scale) : m_scale(scale) {}

    /// A press at a place of the root window, in pixels.
    void press(QPoint place, MediaTime now) { m_rings.push_back({place, now}); }
    /// A ring shows, or has to vanish.
    [[nodiscard]] bool mayHaveChanged() const { return !m_rings.empty() || !m_bounds.isEmpty(); }
    /// The rings as they are now, for a picture whose top left is at `origin` of the root window. Returns
    /// what differs, in the picture's pixels.
    [[nodiscard]] QRegion update(QPoint origin, MediaTime now);
    /// Where rings are drawn, in the picture's pixels.
    [[nodiscard]] QRegion bounds() const { return m_bounds; }
    void draw(SharedImage &image) const;

private:
    struct Ring {
        QPoint place; ///< of the root window
        MediaTime start;
    };

    [[nodiscard]] QRect bounds(const Ring &ring) const;

    double m_scale;
    std::vector<Ring> m_rings;
    QPoint m_origin;
    MediaTime m_now = MediaTime::zero();
    QRegion m_bounds;
};

} // namespace zivra::desktop
