#pragma once

#include "desktop/media/AudioEncoder.h"
#include "desktop/media/SoundTimeline.h"

#include <cstdint>
#include <span>
#include <vector>

namespace zivra::desktop {

/// The sum of several sounds, limited softly and encoded as stereo while they come. Used by one thread at a
/// time.
class LiveMix {
public:
    /// Throws `PlatformError`.
    LiveMix(std::size_t sounds, TrackEncoder::PacketSink sink);

    [[nodiscard]] const AVCodecParameters &parameters() const { return m_encoder.parameters(); }
    [[nodiscard]] AVRational timeBase() const { return m_encoder.timeBase(); }

    /// Goes on with one of the sounds; they all start at zero. Encodes as far as all have got.
    void add(std::size_t sound, std::span<const float> samples, const AudioFormat &format);
    /// Encodes the rest, up to the end of the longest.
    void finish();

private:
    struct Lane {
        SoundTimeline timeline;
        std::int64_t added = 0; ///< frames, in the format that they come in
    };

    void mix(std::int64_t frames);

    AudioEncoder m_encoder;
    std::vector<Lane> m_lanes;
    std::vector<float> m_scratch;
    std::int64_t m_position = 0; ///< frames that are mixed
};

} // namespace zivra::desktop
