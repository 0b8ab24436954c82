#include "desktop/x11/capture/FrameConverter.h"

#include <libyuv.h>

namespace zivra::desktop {

namespace {

/// A buffer's chroma planes hold half the sides, so an odd picture is given one more row or column.
QSize even(QSize size)
{
    return {size.width() + size.width() % 2, size.height() + size.height() % 2};
}

} // namespace

FrameConverter::FrameConverter(QSize source, QSize output)
    : m_output(output),
      m_unscaled(source == output ? nullptr : std::make_unique<FrameBuffer>(even(source)))
{
}

void FrameConverter::convert(SharedImage &image, FrameBuffer &frame)
{
    FrameBuffer &target = m_unscaled ? *m_unscaled : frame;
    // libyuv names the order within a 32-bit word: ARGB is blue first in memory.
    libyuv::ARGBToI420(image.data(), image.stride(), target.plane(0), target.stride(0), target.plane(1),
                       target.stride(1), target.plane(2), target.stride(2), image.size().width(),
                       image.size().height());
    if (m_unscaled) {
        libyuv::I420Scale(target.plane(0), target.stride(0), target.plane(1), target.stride(1),
                          target.plane(2), target.stride(2), image.size().width(), image.size().height(),
                          frame.plane(0), frame.stride(0), frame.plane(1), frame.stride(1), frame.plane(2),
                          frame.stride(2), m_output.width(), m_output.height(), libyuv::kFilterBox);
    }
}

} // namespace zivra::desktop
