#include "desktop/camera/PictureBuffers.h"

#include <mutex>
#include <utility>
#include <vector>

namespace zivra::desktop {

namespace {

using Bytes = std::vector<std::uint8_t>;

/// One is shown, one held, the others wait for an encoder that is late.
constexpr int kMostInUse = 12;

} // namespace

class PictureBuffers::Shelf {
public:
    std::optional<Bytes> take()
    {
        const std::lock_guard lock(m_mutex);
        if (m_inUse == kMostInUse) {
            return std::nullopt;
        }
        ++m_inUse;
        if (m_free.empty()) {
            return Bytes();
        }
        Bytes bytes = std::move(m_free.back());
        m_free.pop_back();
        return bytes;
    }
    void giveBack(Bytes bytes)
    {
        const std::lock_guard lock(m_mutex);
        --m_inUse;
        m_free.push_back(std::move(bytes));
    }

private:
    std::mutex m_mutex;
    std::vector<Bytes> m_free; ///< guarded by `m_mutex`, like the next
    int m_inUse = 0;
};

std::uint8_t *BlankPicture::plane(std::size_t index)
{
    return const_cast<std::uint8_t *>(frame.planes.at(index).data); // ours alone as yet
}

std::shared_ptr<const VideoFrame> BlankPicture::finished() &&
{
    return std::make_shared<const VideoFrame>(std::move(frame));
}

PictureBuffers::PictureBuffers() : m_shelf(std::make_shared<Shelf>()) {}

std::optional<BlankPicture> PictureBuffers::take(QSize size)
{
    auto bytes = m_shelf->take();
    if (!bytes) {
        return std::nullopt;
    }
    const auto luma = static_cast<std::size_t>(size.width()) * static_cast<std::size_t>(size.height());
    bytes->resize(luma * 3 / 2);
    const std::shared_ptr<Bytes> storage(new Bytes(std::move(*bytes)), [shelf = m_shelf](Bytes *used) {
        const std::unique_ptr<Bytes> owned(used);
        shelf->giveBack(std::move(*owned));
    });
    BlankPicture picture;
    picture.frame.width = size.width();
    picture.frame.height = size.height();
    picture.frame.planes = {{{storage->data(), size.width()},
                             {storage->data() + luma, size.width() / 2},
                             {storage->data() + luma / 4 * 5, size.width() / 2}}};
    picture.frame.storage = storage;
    return picture;
}

} // namespace zivra::desktop
