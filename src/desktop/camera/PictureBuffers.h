#pragma once

#include "platform/MediaSample.h"

#include <QSize>

#include <cstdint>
#include <memory>

namespace zivra::desktop {

/// A picture that is still being filled in.
struct BlankPicture {
    VideoFrame frame;

    /// Where plane 0, 1 or 2 (Y, U, V) begins.
    [[nodiscard]] std::uint8_t *plane(std::size_t index);
    [[nodiscard]] int stride(std::size_t index) const { return frame.planes.at(index).stride; }
    /// No more is written to it.
    [[nodiscard]] std::shared_ptr<const VideoFrame> finished() &&;
};

/// The memory of a camera's pictures, which is used again once the last reference to a picture is dropped, on
/// whatever thread that happens. Used by one thread at a time; pictures may outlive it.
class PictureBuffers {
public:
    PictureBuffers();

    /// Even sides. Absent when as many pictures are in use as may be in flight. Holds what was there before.
    [[nodiscard]] std::optional<BlankPicture> take(QSize size);

private:
    class Shelf;
    std::shared_ptr<Shelf> m_shelf; ///< shared with the pictures
};

} // namespace zivra::desktop
