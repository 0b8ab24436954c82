#include "capture/LatestPicture.h"

#include <QCoreApplication>

#include <utility>

namespace zivra {

std::shared_ptr<const VideoFrame> LatestPicture::latest() const
{
    return std::atomic_load(&m_picture);
}

void LatestPicture::setHandler(std::function<void()> handler)
{
    m_handler = std::move(handler);
    m_isWatched = m_handler != nullptr;
}

void LatestPicture::show(std::shared_ptr<const VideoFrame> picture)
{
    std::atomic_store(&m_picture, std::move(picture));
    if (!m_isWatched || m_isPending.exchange(true)) {
        return;
    }
    QMetaObject::invokeMethod(
        QCoreApplication::instance(),
        [weakSelf = weak_from_this()] {
            if (const auto self = weakSelf.lock()) {
                self->tell();
            }
        },
        Qt::QueuedConnection);
}

void LatestPicture::tell()
{
    m_isPending = false;
    // A copy, since the handler may set another one.
    if (const auto handler = m_handler) {
        handler();
    }
}

} // namespace zivra
