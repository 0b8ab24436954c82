#pragma once

#include "desktop/media/FragmentedMovie.h"

#include <cstdint>
#include <vector>

namespace zivra::desktop {

class BoxWriter;

/// The tables of a track's samples in an ordinary movie file: their times, sizes, places and key frames
/// (ISO/IEC 14496-12, 8.6 and 8.7). Times are in ticks of the track's time scale.
class SampleTable {
public:
    /// At least one, in the order of decoding.
    explicit SampleTable(std::vector<IndexedSample> samples);

    /// When the first picture shows, or the first sound is heard, on the track's own timeline, which starts
    /// where decoding does.
    [[nodiscard]] std::int64_t firstPresentation() const;
    /// From there to the end of the last.
    [[nodiscard]] std::int64_t shownDuration() const;
    /// The sum of all durations.
    [[nodiscard]] std::int64_t mediaDuration() const;

    void write(BoxWriter &writer) const;

private:
    struct Run {
        std::uint32_t count;
        std::int64_t value;
    };

    void useExactTimes();
    template <typename Value>
    [[nodiscard]] std::vector<Run> runs(Value value) const;
    void writeTimes(BoxWriter &writer) const;
    void writeKeyFrames(BoxWriter &writer) const;
    void writePlaces(BoxWriter &writer) const;

    std::vector<IndexedSample> m_samples;
};

} // namespace zivra::desktop
