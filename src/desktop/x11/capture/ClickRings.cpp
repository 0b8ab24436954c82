#include "desktop/x11/capture/ClickRings.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace zivra::desktop {

namespace {

constexpr double kSeconds = 0.45;
constexpr double kFirstRadius = 10; // points
constexpr double kLastRadius = 24;  // points
constexpr double kLineWidth = 3;    // points
constexpr double kOpacity = 0.85;
// Blue, green, red, of the program's accent colour.
constexpr std::array kColour{245.0, 92.0, 97.0};

} // namespace

void ClickRings::add(QPoint place, MediaTime now)
{
    m_rings.push_back({place, now});
}

bool ClickRings::areVisible(MediaTime now)
{
    std::erase_if(m_rings, [now](const Ring &ring) { return (now - ring.start).seconds() > kSeconds; });
    return !m_rings.empty();
}

void ClickRings::paint(SharedImage &image, QPoint origin, MediaTime now) const
{
    for (const Ring &ring : m_rings) {
        const double progress = std::clamp((now - ring.start).seconds() / kSeconds, 0.0, 1.0);
        const double radius = (kFirstRadius + (kLastRadius - kFirstRadius) * progress) * m_scale;
        const double halfWidth = kLineWidth * m_scale / 2;
        const QPoint centre = ring.centre - origin;
        const int reach = static_cast<int>(std::ceil(radius + halfWidth + 1));
        const QRect box = QRect(centre - QPoint(reach, reach), centre + QPoint(reach, reach))
                              .intersected(QRect({0, 0}, image.size()));
        for (int y = box.top(); y <= box.bottom(); ++y) {
            for (int x = box.left(); x <= box.right(); ++x) {
                const double fromLine = std::abs(std::hypot(x - centre.x(), y - centre.y()) - radius);
                const double coverage = std::clamp(halfWidth + 0.5 - fromLine, 0.0, 1.0);
                const double alpha = coverage * kOpacity * (1 - progress);
                std::uint8_t *target = image.data() + y * image.stride() + x * 4;
                for (std::size_t channel = 0; channel < kColour.size(); ++channel) {
                    target[channel] = static_cast<std::uint8_t>(
                        std::lround(target[channel] + (kColour.at(channel) - target[channel]) * alpha));
                }
            }
        }
    }
}

} // namespace zivra::desktop
