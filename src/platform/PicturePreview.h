#pragma once

#include "platform/MediaSample.h"

#include <functional>
#include <memory>

namespace zivra {

/// The newest picture of something live, for showing on the screen. Pictures that nobody was quick enough
/// to look at are passed over.
class PicturePreview {
public:
    virtual ~PicturePreview() = default;

    /// Any thread. Null before the first picture; the last one stays when the source has ended.
    [[nodiscard]] virtual std::shared_ptr<const VideoFrame> latest() const = 0;
    /// Main thread only. Called on the main thread after a new picture has come; one call at most is pending,
    /// however many pictures came. Empty: nobody watches, and nothing is posted. Replaces the handler
    /// set before.
    virtual void setHandler(std::function<void()> handler) = 0;
};

/// Never has a picture.
class NoPicture final : public PicturePreview {
public:
    [[nodiscard]] std::shared_ptr<const VideoFrame> latest() const override { return nullptr; }
    void setHandler(std::function<void()> /*handler*/) override {}
};

} // namespace zivra
