#include "desktop/x11/capture/FramePool.h"

#include <mutex>
#include <utility>

namespace zivra::desktop {

FrameBuffer::FrameBuffer(QSize frameSize)
    : size(frameSize),
      bytes(static_cast<std::size_t>(frameSize.width()) * static_cast<std::size_t>(frameSize.height()) * 3 /
            2)
{
}

std::uint8_t *FrameBuffer::plane(int index)
{
    const auto luma = static_cast<std::size_t>(size.width()) * static_cast<std::size_t>(size.height());
    return bytes.data() + (index == 0 ? 0 : index == 1 ? luma : luma + luma / 4);
}

struct FramePool::Shelf {
    std::mutex mutex;
    std::vector<std::unique_ptr<FrameBuffer>> free;
};

FramePool::FramePool(QSize frameSize, int count) : m_shelf(std::make_shared<Shelf>())
{
    for (int made = 0; made < count; ++made) {
        m_shelf->free.push_back(std::make_unique<FrameBuffer>(frameSize));
    }
}

std::unique_ptr<FrameBuffer> FramePool::take()
{
    const std::lock_guard lock(m_shelf->mutex);
    if (m_shelf->free.empty()) {
        return nullptr;
    }
    auto buffer = std::move(m_shelf->free.back());
    m_shelf->free.pop_back();
    return buffer;
}

std::shared_ptr<const VideoFrame> FramePool::wrap(std::unique_ptr<FrameBuffer> buffer) const
{
    auto frame = std::make_shared<VideoFrame>();
    frame->width = buffer->size.width();
    frame->height = buffer->size.height();
    for (int index = 0; index < 3; ++index) {
        frame->planes.at(static_cast<std::size_t>(index)) = {buffer->plane(index), buffer->stride(index)};
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
