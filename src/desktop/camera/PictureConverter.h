#pragma once

#include "desktop/camera/CameraMode.h"
#include "desktop/frames/FramePool.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>

struct AVCodecContext;
struct AVFrame;

namespace zivra::desktop {

/// A picture as a camera delivers it; the bytes belong to the camera.
struct RawPicture {
    CameraPixels pixels = CameraPixels::Yuyv;
    QSize size;                          ///< of a JPEG, whatever it says itself
    int stride = 0;                      ///< bytes from one row to the next; 0: no more than a row has
    std::span<const std::uint8_t> bytes; ///< all of it; of NV12 the first plane alone where there is a second
    std::span<const std::uint8_t> secondPlane{}; ///< of NV12; empty: right after the first
};

/// Turns a camera's pictures into frames: YUV is taken for BT.601 in limited range, JPEG is in full range by
/// its own rules (JFIF 1.02). Used by one thread at a time; frames may outlive it.
class PictureConverter {
public:
    PictureConverter();
    ~PictureConverter();
    PictureConverter(const PictureConverter &) = delete;
    PictureConverter &operator=(const PictureConverter &) = delete;

    /// Odd sides lose a row or column. Null for a picture that is cut short or damaged, and while too many
    /// are in use.
    [[nodiscard]] std::shared_ptr<const VideoFrame> convert(const RawPicture &raw);

private:
    struct CodecDeleter {
        void operator()(AVCodecContext *context) const;
    };
    struct FrameDeleter {
        void operator()(AVFrame *frame) const;
    };

    [[nodiscard]] bool decode(std::span<const std::uint8_t> jpeg);
    [[nodiscard]] bool unpackDecoded();

    std::optional<FramePool> m_pool;                         ///< of the size that came last
    std::unique_ptr<AVCodecContext, CodecDeleter> m_decoder; ///< null until the first JPEG
    std::unique_ptr<AVFrame, FrameDeleter> m_decoded;
    std::vector<std::uint8_t> m_packet;
    std::vector<std::uint8_t> m_bgrx; ///< the decoded picture
};

} // namespace zivra::desktop
