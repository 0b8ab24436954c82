#pragma once

#include "desktop/media/ChangedBlocks.h"
#include "desktop/media/FrameNumbers.h"
#include "desktop/media/PictureEncoder.h"
#include "desktop/media/RateControl.h"

#include <limits>
#include <memory>
#include <optional>

struct x264_t;

namespace zivra::desktop {

/// Encodes H.264 by libx264 itself, which libavcodec does not tell what has changed since the picture before:
/// macroblocks without a change cost next to nothing. With a rate control of our own, since that of libx264
/// codes still content again and again. A picture that repeats another for good is not even encoded: a still
/// screen costs a copy of some bytes a second.
class X264PictureEncoder final : public PictureEncoder {
public:
    explicit X264PictureEncoder(const VideoSettings &settings);

    void open(bool realTime, PacketSink sink) override;
    void finish() override;

private:
    struct EncoderDeleter {
        void operator()(x264_t *encoder) const;
    };

    void encodePicture(const std::shared_ptr<const VideoFrame> &picture, std::int64_t ticks) override;
    [[nodiscard]] CodecParametersPtr makeParameters();
    [[nodiscard]] PacketPtr encoded(const VideoFrame &picture, std::int64_t ticks, bool isKey, int quantiser);
    [[nodiscard]] PacketPtr repeated();

    std::unique_ptr<x264_t, EncoderDeleter> m_encoder;
    PacketSink m_sink;
    ChangedBlocks m_blocks;
    RateControl m_rate;
    int m_untilKey = 0; ///< pictures
    std::optional<FrameNumbers> m_numbers;
    /// At most this coarse is all of a picture that did not change, since it last did.
    int m_coarsest = std::numeric_limits<int>::max();
    PacketPtr m_skipped; ///< the newest picture, if nothing of it was coded
};

} // namespace zivra::desktop
