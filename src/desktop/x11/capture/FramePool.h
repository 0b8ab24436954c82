#pragma once

#include "platform/MediaSample.h"

#include <QSize>

#include <cstdint>
#include <memory>
#include <vector>

namespace zivra::desktop {

/// The memory of one frame in planar YUV 4:2:0; sides are even.
struct FrameBuffer {
    explicit FrameBuffer(QSize frameSize);

    QSize size;
    std::vector<std::uint8_t> bytes;

    [[nodiscard]] std::uint8_t *plane(int index);
    [[nodiscard]] int stride(int index) const { return index == 0 ? size.width() : size.width() / 2; }
};

/// A fixed number of frame buffers. A frame's buffer comes back when its last reference is dropped, on
/// whatever thread that happens; it may outlive the pool.
class FramePool {
public:
    FramePool(QSize frameSize, int count);

    /// Null when all are in use.
    [[nodiscard]] std::unique_ptr<FrameBuffer> take();
    /// Wraps a filled buffer. Dropping the frame gives the buffer back.
    [[nodiscard]] std::shared_ptr<const VideoFrame> wrap(std::unique_ptr<FrameBuffer> buffer) const;

private:
    struct Shelf;

    std::shared_ptr<Shelf> m_shelf;
};

} // namespace zivra::desktop
