#include "desktop/frames/FramePool.h"

#include <mutex>
#include <utility>

namespace zivra::desktop {

FrameBuffer::FrameBuffer(QSize size)
    : m_size(size),
      m_bytes(static_cast<std::size_t>(size.width()) * static_cast<std::size_t>(size.height()) * 3 / 2)
{
}

std::uint8_t *FrameBuffer::at(int plane, int x, int y)
{
    const auto luma = static_cast<std::ptrdiff_t>(m_bytes.size() / 3 * 2);
    if (plane == 0) {
        return m_bytes.data() + std::ptrdiff_t{y} * stride(0) + x;
    }
    return m_bytes.data() + luma + (plane - 1) * luma / 4 + std::ptrdiff_t{y / 2} * stride(plane) + x / 2;
}

struct FramePool::Shelf {
    std::mutex mutex;
    std::vector<std::unique_ptr<FrameBuffer>> free; ///< guarded by `mutex`
};

FramePool::FramePool(QSize frameSize, int count)
    : m_frameSize(frameSize),
      m_unmade(count),
      m_shelf(std::make_shared<Shelf>())
{
}

std::unique_ptr<FrameBuffer> FramePool::take()
{
    {
        const std::lock_guard lock(m_shelf->mutex);
        if (!m_shelf->free.empty()) {
            auto buffer = std::move(m_shelf->free.back());
            m_shelf->free.pop_back();
            return buffer;
        }
    }
    if (m_unmade == 0) {
        return nullptr;
    }
    --m_unmade;
    return std::make_unique<FrameBuffer>(m_frameSize);
}

std::shared_ptr<VideoFrame> FramePool::wrap(std::unique_ptr<FrameBuffer> buffer) const
{
    auto frame = std::make_shared<VideoFrame>();
    frame->width = m_frameSize.width();
    frame->height = m_frameSize.height();
    for (int plane = 0; plane < 3; ++plane) {
        frame->planes.at(static_cast<std::size_t>(plane)) = {buffer->at(plane), buffer->stride(plane)};
    }
    const auto giveBack = [shelf = m_shelf](FrameBuffer *used) {
        std::unique_ptr<FrameBuffer> owned(used);
        const std::lock_guard lock(shelf->mutex);
        shelf->free.push_back(std::move(owned));
    };
    frame->storage = std::shared_ptr<FrameBuffer>(buffer.release(), giveBack);
    return frame;
}

} // namespace zivra::desktop
