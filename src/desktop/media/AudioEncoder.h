#pragma once

#include "desktop/media/Resampler.h"
#include "desktop/media/TrackEncoder.h"

#include <optional>
#include <vector>

namespace zivra::desktop {

/// Encodes blocks of sound as AAC. Time is counted in samples from the movie's start: gaps between
/// blocks become silence, overlaps are cut, and deviations too small to matter are absorbed.
class AudioEncoder final : public TrackEncoder {
public:
    explicit AudioEncoder(const AudioSettings &settings);

    void open(bool realTime, PacketSink sink) override;
    [[nodiscard]] const AVCodecParameters &parameters() const override { return *m_parameters; }
    [[nodiscard]] AVRational timeBase() const override { return {1, m_rate}; }
    [[nodiscard]] bool accepts(const MediaSample &sample) const override;
    void encode(const MediaSample &sample, MediaTime time) override;
    void fillUntil(MediaTime time) override;
    void finish() override;

private:
    [[nodiscard]] std::size_t leadingFramesToSkip(const AudioBlock &block, std::int64_t position);
    void useFormat(const AudioFormat &format);
    void addSilence(std::int64_t frames);
    void encodeWholeFrames();
    void encodePending(int frames);
    [[nodiscard]] std::int64_t framesWritten() const;

    const AudioSettings m_settings;
    const int m_rate; ///< frames a second
    CodecContextPtr m_codec;
    CodecParametersPtr m_parameters;
    PacketSink m_sink;
    std::optional<Resampler> m_resampler;
    std::vector<float> m_pending; ///< interleaved, in the target format, not yet encoded
    std::int64_t m_framesEncoded = 0;
    bool m_hasSound = false; ///< a block has come that is not wholly before the movie's start
};

} // namespace zivra::desktop
