#pragma once

#include "platform/MediaSample.h"

#include <QSize>

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

namespace zivra::desktop {

/// The memory of one picture in planar YUV 4:2:0; sides are even.
class FrameBuffer {
public:
    explicit FrameBuffer(QSize size);

    [[nodiscard]] QSize size() const { return m_size; }
    [[nodiscard]] int stride(int plane) const { return plane == 0 ? m_size.width() : m_size.width() / 2; }
    /// Where a place of the picture, with even coordinates, is found in the plane.
    [[nodiscard]] std::uint8_t *at(int plane, int x = 0, int y = 0);

    /// Which picture it holds, as the converter counts them; 0: none.
    std::uint64_t generation = 0;

private:
    QSize m_size;
    std::vector<std::uint8_t> m_bytes;
};

/// A fixed number of frame buffers, used by one thread at a time, made when first needed. A frame's buffer
/// comes back when its last reference is dropped, on whatever thread that happens; it may outlive the pool.
class FramePool {
public:
    FramePool(QSize frameSize, int count);

    [[nodiscard]] QSize frameSize() const { return m_frameSize; }

    /// The one that was given back last, since it differs least from the picture now. Null when all are in
    /// use. A buffer that is not wrapped is lost to the pool.
    [[nodiscard]] std::unique_ptr<FrameBuffer> take();
    /// Wraps a filled buffer. Dropping the frame gives the buffer back.
    [[nodiscard]] std::shared_ptr<VideoFrame> wrap(std::unique_ptr<FrameBuffer> buffer) const;

private:
    struct Shelf;

    QSize m_frameSize;
    int m_unmade;
    std::shared_ptr<Shelf> m_shelf;
};

} // namespace zivra::desktop
