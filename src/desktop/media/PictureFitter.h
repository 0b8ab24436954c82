#pragma once

#include "platform/MediaSample.h"

#include <memory>

struct SwsContext;

namespace zivra::desktop {

/// Brings pictures of any size to one: scaled as far as fits, in the middle, on black. Used by one thread at
/// a time.
class PictureFitter {
public:
    /// Even numbers of pixels.
    PictureFitter(int width, int height) : m_width(width), m_height(height) {}

    /// A picture that has the size already is passed on. Throws `std::bad_alloc`.
    [[nodiscard]] std::shared_ptr<const VideoFrame> fit(const std::shared_ptr<const VideoFrame> &picture);

private:
    struct ScalerDeleter {
        void operator()(SwsContext *context) const;
    };

    [[nodiscard]] VideoFrame blackPicture() const;

    const int m_width;
    const int m_height;
    std::unique_ptr<SwsContext, ScalerDeleter> m_scaler; ///< of the sizes that came last
};

} // namespace zivra::desktop
