#pragma once

#include "desktop/x11/capture/SharedImage.h"
#include "platform/MediaTime.h"

#include <QPoint>

#include <vector>

namespace zivra::desktop {

/// The rings that show mouse presses: each grows out of its place and fades.
class ClickRings {
public:
    /// `scale`: pixels a point.
    explicit ClickRings(double scale) : m_scale(scale) {}

    /// A press at a place on the root window, in pixels.
    void add(QPoint place, MediaTime now);
    /// Some ring still shows; forgets those that do not.
    [[nodiscard]] bool areVisible(MediaTime now);
    /// Into a picture whose top left lies at `origin` on the root window.
    void paint(SharedImage &image, QPoint origin, MediaTime now) const;

private:
    struct Ring {
        QPoint centre;
        MediaTime start;
    };

    double m_scale;
    std::vector<Ring> m_rings;
};

} // namespace zivra::desktop
