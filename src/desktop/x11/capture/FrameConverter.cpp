#include "desktop/x11/capture/FrameConverter.h"

#include <libyuv.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace zivra::desktop {

namespace {

/// A buffer that missed more pictures than this is converted anew.
constexpr std::size_t kRememberedChanges = 16;

QSize evenUp(QSize size)
{
    return {(size.width() + 1) & ~1, (size.height() + 1) & ~1};
}

} // namespace

FrameConverter::FrameConverter(QSize source, QSize output)
    : m_source(source),
      m_output(output),
      m_unscaled(evenUp(source) == output ? nullptr : std::make_unique<FrameBuffer>(evenUp(source)))
{
}

void FrameConverter::convert(SharedImage &image, const QRegion &changed, FrameBuffer &buffer)
{
    m_changes.push_back(changed);
    ++m_generation;
    if (m_changes.size() > kRememberedChanges) {
        m_changes.pop_front();
    }
    FrameBuffer &target = m_unscaled ? *m_unscaled : buffer;
    const QRegion missed = missing(target) & image.rect();
    for (const QRect &rectangle : missed) {
        convertRect(image, rectangle, target);
    }
    if (!missed.isEmpty()) {
        repeatOddEdges(target);
    }
    target.generation = m_generation;
    if (m_unscaled && !missing(buffer).isEmpty()) {
        scale(buffer);
    }
    buffer.generation = m_generation;
}

QRegion FrameConverter::missing(const FrameBuffer &buffer) const
{
    const std::uint64_t missed = m_generation - buffer.generation;
    if (buffer.generation == 0 || missed > m_changes.size()) {
        return QRect(QPoint(0, 0), m_source);
    }
    QRegion region;
    for (auto change = m_changes.end() - static_cast<std::ptrdiff_t>(missed); change != m_changes.end();
         ++change) {
        region += *change;
    }
    return region;
}

void FrameConverter::convertRect(SharedImage &image, QRect rectangle, FrameBuffer &buffer) const
{
    // Four pixels share their colour, so a rectangle begins and ends on even places (or the picture's edge).
    const int left = rectangle.left() & ~1;
    const int top = rectangle.top() & ~1;
    const int right = std::min((rectangle.right() + 2) & ~1, m_source.width());
    const int bottom = std::min((rectangle.bottom() + 2) & ~1, m_source.height());
    // libyuv names the order within a 32-bit word: ARGB is blue first in memory.
    libyuv::ARGBToI420(image.pixel(left, top), image.stride(), buffer.at(0, left, top), buffer.stride(0),
                       buffer.at(1, left, top), buffer.stride(1), buffer.at(2, left, top), buffer.stride(2),
                       right - left, bottom - top);
}

/// A picture with an odd side is made even by repeating its last column or row.
void FrameConverter::repeatOddEdges(FrameBuffer &buffer) const
{
    const int width = m_source.width();
    const int height = m_source.height();
    if (width % 2 != 0) {
        for (int y = 0; y < height; ++y) {
            std::uint8_t *end = buffer.at(0, 0, y) + width;
            *end = *(end - 1);
        }
    }
    if (height % 2 != 0) {
        std::memcpy(buffer.at(0, 0, height), buffer.at(0, 0, height - 1),
                    static_cast<std::size_t>(buffer.stride(0)));
    }
}

void FrameConverter::scale(FrameBuffer &buffer)
{
    FrameBuffer &from = *m_unscaled;
    libyuv::I420Scale(from.at(0), from.stride(0), from.at(1), from.stride(1), from.at(2), from.stride(2),
                      m_source.width(), m_source.height(), buffer.at(0), buffer.stride(0), buffer.at(1),
                      buffer.stride(1), buffer.at(2), buffer.stride(2), m_output.width(), m_output.height(),
                      libyuv::kFilterBox);
}

std::vector<QRect> FrameConverter::outputRects(const QRegion &changed) const
{
    const double x = m_unscaled ? double(m_output.width()) / m_source.width() : 1;
    const double y = m_unscaled ? double(m_output.height()) / m_source.height() : 1;
    // A pixel of a scaled picture takes in what lies around it.
    const int reach = m_unscaled ? 1 : 0;
    const auto down = [reach](double place) { return (static_cast<int>(std::floor(place)) - reach) & ~1; };
    const auto up = [reach](double place) { return (static_cast<int>(std::ceil(place)) + reach + 1) & ~1; };
    const QRect all(QPoint(0, 0), m_output);
    QRegion grown;
    for (const QRect &each : changed) {
        const QPoint topLeft(down(each.left() * x), down(each.top() * y));
        const QPoint end(up((each.right() + 1) * x), up((each.bottom() + 1) * y));
        grown += QRect(topLeft, end - QPoint(1, 1)) & all;
    }
    return {grown.begin(), grown.end()};
}

} // namespace zivra::desktop
