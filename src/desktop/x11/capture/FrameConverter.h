#pragma once

#include "desktop/x11/capture/FramePool.h"
#include "desktop/x11/capture/SharedImage.h"

#include <memory>

namespace zivra::desktop {

/// Turns the screen's picture into frames of the output's size, with libyuv: BT.601, limited range, scaled
/// by area where the sizes differ.
class FrameConverter {
public:
    FrameConverter(QSize source, QSize output);

    void convert(SharedImage &image, FrameBuffer &frame);

private:
    QSize m_output;
    std::unique_ptr<FrameBuffer> m_unscaled; ///< null when nothing is scaled
};

} // namespace zivra::desktop
