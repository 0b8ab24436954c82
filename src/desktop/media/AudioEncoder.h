#pragma once

#include "desktop/media/SoundTimeline.h"
#include "desktop/media/TrackEncoder.h"

namespace zivra::desktop {

/// Encodes blocks of sound, each at its time, as AAC.
class AudioEncoder final : public TrackEncoder {
public:
    explicit AudioEncoder(const AudioSettings &settings);

    void open(bool realTime, PacketSink sink) override;
    [[nodiscard]] const AVCodecParameters &parameters() const override { return *m_parameters; }
    [[nodiscard]] AVRational timeBase() const override { return {1, m_rate}; }
    bool shareSound(SoundSink sink) override;
    [[nodiscard]] bool accepts(const MediaSample &sample) const override;
    void encode(const MediaSample &sample, MediaTime time) override;
    [[nodiscard]] bool hasContent() const override { return m_timeline.hasSound(); }
    void fillUntil(MediaTime time) override;
    void finish() override;

private:
    void encodeWholeFrames();
    void encodeNext(int frames);
    void passOn(PacketPtr packet);

    const AudioSettings m_settings;
    const int m_rate; ///< frames a second
    SoundTimeline m_timeline;
    std::vector<float> m_interleaved; ///< one frame's worth, kept for its memory
    CodecContextPtr m_codec;
    CodecParametersPtr m_parameters;
    PacketSink m_sink;
    SoundSink m_listener;
};

} // namespace zivra::desktop
