#include "desktop/x11/capture/ClickOverlay.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace zivra::desktop {

namespace {

constexpr double kSeconds = 0.4;
constexpr double kRadius = 20;   // points
constexpr double kLineWidth = 4; // points
constexpr double kOpacity = 0.9;
constexpr std::array kColour{245.0, 92.0, 97.0}; // blue, green, red

/// How much of a pixel that far from the middle of the line it covers, with a soft edge one pixel wide.
double coverage(double distance, double lineWidth)
{
    return std::clamp(lineWidth / 2 + 0.5 - distance, 0.0, 1.0);
}

void blend(double alpha, std::uint8_t *pixel)
{
    for (std::size_t channel = 0; channel < kColour.size(); ++channel) {
        const double value = pixel[channel] + (kColour.at(channel) - pixel[channel]) * alpha;
        pixel[channel] = static_cast<std::uint8_t>(std::lround(value));
    }
}

} // namespace

QRect ClickOverlay::bounds(const Ring &ring) const
{
    const int reach = static_cast<int>(std::ceil((kRadius + kLineWidth / 2) * m_scale)) + 1;
    return QRect(ring.place - m_origin, QSize(1, 1)).adjusted(-reach, -reach, reach, reach);
}

QRegion ClickOverlay::update(QPoint origin, MediaTime now)
{
    std::erase_if(m_rings, [now](const Ring &ring) { return (now - ring.start).seconds() >= kSeconds; });
    m_origin = origin;
    m_now = now;
    const QRegion before = m_bounds;
    m_bounds = QRegion();
    for (const Ring &ring : m_rings) {
        m_bounds += bounds(ring);
    }
    return before + m_bounds;
}

void ClickOverlay::draw(SharedImage &image) const
{
    for (const Ring &ring : m_rings) {
        const double opacity = kOpacity * (1 - (m_now - ring.start).seconds() / kSeconds);
        const QPoint centre = ring.place - m_origin;
        const QRect visible = bounds(ring) & image.rect();
        for (int y = visible.top(); y <= visible.bottom(); ++y) {
            for (int x = visible.left(); x <= visible.right(); ++x) {
                const double fromCentre = std::hypot(x - centre.x(), y - centre.y());
                const double covered =
                    coverage(std::abs(fromCentre - kRadius * m_scale), kLineWidth * m_scale);
                blend(covered * opacity, image.pixel(x, y));
            }
        }
    }
}

} // namespace zivra::desktop
