#pragma once

#include "desktop/frames/FramePool.h"
#include "desktop/x11/capture/SharedImage.h"

#include <QRect>
#include <QRegion>
#include <QSize>

#include <cstdint>
#include <deque>
#include <memory>
#include <vector>

namespace zivra::desktop {

/// Turns the screen's picture into frames with libyuv: BT.601, limited range, scaled by area where the sizes
/// differ by more than what makes them even. Only what a buffer does not hold yet is converted.
class FrameConverter {
public:
    /// `output` is even.
    FrameConverter(QSize source, QSize output);

    /// Brings a buffer up to date. `changed`: what differs from the image of the call before, in its pixels.
    void convert(SharedImage &image, const QRegion &changed, FrameBuffer &buffer);
    /// The same region in pixels of the output, grown to even places.
    [[nodiscard]] std::vector<QRect> outputRects(const QRegion &changed) const;

private:
    [[nodiscard]] QRegion missing(const FrameBuffer &buffer) const;
    void convertRect(SharedImage &image, QRect rectangle, FrameBuffer &buffer) const;
    void repeatOddEdges(FrameBuffer &buffer) const;
    void scale(FrameBuffer &buffer);

    QSize m_source;
    QSize m_output;
    std::unique_ptr<FrameBuffer> m_unscaled; ///< null when nothing is scaled
    std::uint64_t m_generation = 0;
    std::deque<QRegion> m_changes; ///< of the latest generations, the newest last
};

} // namespace zivra::desktop
