#pragma once

#include "desktop/media/Resampler.h"

#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <vector>

namespace zivra::desktop {

/// Lays pieces of sound of any format on one unbroken timeline of samples that starts at zero: gaps become
/// silence, overlaps are cut, what lies before zero too, and deviations too small to matter are
/// absorbed. Used by one thread at a time.
class SoundTimeline {
public:
    /// Pieces that are off by less than `tolerance` seconds follow each other without a break.
    SoundTimeline(const AudioFormat &format, double tolerance);

    [[nodiscard]] const AudioFormat &format() const { return m_format; }

    /// `samples` are interleaved; `position` is where they belong, in frames of the timeline.
    void add(std::span<const float> samples, const AudioFormat &format, std::int64_t position);
    /// Goes on with silence up to `position`.
    void addSilenceUntil(std::int64_t position);
    /// Makes everything added available.
    void drain();

    /// Whether anything at or after zero was added, silence aside.
    [[nodiscard]] bool hasSound() const { return m_hasSound; }
    /// Frames that can be read.
    [[nodiscard]] std::int64_t available() const { return m_end - m_begin; }
    /// Frames from zero to where `read` goes on.
    [[nodiscard]] std::int64_t position() const { return m_begin; }
    /// Fills `target`, interleaved, with no more than what is available.
    void read(std::span<float> target);

private:
    struct Segment {
        std::vector<float> samples;
        std::size_t silence = 0; ///< zeros that follow the samples: a long gap takes no memory
        std::size_t consumed = 0;

        [[nodiscard]] std::size_t size() const { return samples.size() + silence - consumed; }
    };

    void useFormat(const AudioFormat &format);
    void append(std::vector<float> samples, std::size_t silence);

    const AudioFormat m_format;
    const std::int64_t m_tolerance; ///< frames
    std::optional<Resampler> m_resampler;
    std::deque<Segment> m_segments;
    std::int64_t m_begin = 0; ///< frames from zero
    std::int64_t m_end = 0;   ///< frames from zero
    bool m_hasSound = false;
};

} // namespace zivra::desktop
