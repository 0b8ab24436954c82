#pragma once

#include "desktop/media/PictureEncoder.h"

namespace zivra::desktop {

/// Encodes with libx264 or libx265 through libavcodec.
class LibavPictureEncoder final : public PictureEncoder {
public:
    explicit LibavPictureEncoder(const VideoSettings &settings);

    void open(bool realTime, PacketSink sink) override;
    void finish() override;

private:
    void encodePicture(const std::shared_ptr<const VideoFrame> &picture, std::int64_t ticks) override;

    CodecContextPtr m_codec;
    PacketSink m_sink;
};

} // namespace zivra::desktop
