#pragma once

#include "desktop/media/TrackEncoder.h"

namespace zivra::desktop {

/// Encodes pictures that come at any pace with libx264 or libx265, without delay: each picture's packet
/// comes out at once, and there are no B-frames.
class VideoEncoder final : public TrackEncoder {
public:
    explicit VideoEncoder(const VideoSettings &settings);

    void open(bool realTime, PacketSink sink) override;
    [[nodiscard]] const AVCodecParameters &parameters() const override { return *m_parameters; }
    [[nodiscard]] AVRational timeBase() const override;
    [[nodiscard]] bool accepts(const MediaSample &sample) const override;
    void encode(const MediaSample &sample, MediaTime time) override;
    [[nodiscard]] bool hasContent() const override { return m_lastTime >= 0; }
    void fillUntil(MediaTime time) override;
    void finish() override;

private:
    const VideoSettings m_settings;
    CodecContextPtr m_codec;
    CodecParametersPtr m_parameters;
    PacketSink m_sink;
    std::int64_t m_lastTime = -1; ///< of the newest picture, in the time base
};

} // namespace zivra::desktop
