#pragma once

#include "desktop/x11/capture/X11PictureSource.h"

namespace zivra::desktop {

/// Makes picture sources of the X server in $DISPLAY. May be used from any thread.
class X11PictureSourceFactory final : public PictureSourceFactory {
public:
    [[nodiscard]] std::unique_ptr<CaptureSource>
    makePictureSource(const ContentFilter &filter, const CaptureConfiguration &configuration) override
    {
        return std::make_unique<X11PictureSource>(filter, configuration);
    }
};

} // namespace zivra::desktop
