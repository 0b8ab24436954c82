#pragma once

#include "platform/PicturePreview.h"

#include <atomic>
#include <memory>

namespace zivra {

/// A preview that is shown its pictures by one thread at a time.
class LatestPicture final : public PicturePreview, public std::enable_shared_from_this<LatestPicture> {
public:
    [[nodiscard]] std::shared_ptr<const VideoFrame> latest() const override;
    void setHandler(std::function<void()> handler) override;

    /// Any thread. Null: there is nothing to be seen any more.
    void show(std::shared_ptr<const VideoFrame> picture);

private:
    void tell();

    std::shared_ptr<const VideoFrame> m_picture; ///< through the atomic access functions only
    std::atomic<bool> m_isWatched = false;
    std::atomic<bool> m_isPending = false; ///< a call of the handler has been posted
    std::function<void()> m_handler;       ///< main thread
};

} // namespace zivra
