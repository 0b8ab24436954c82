#pragma once

#include "platform/MediaTime.h"

#include <cstdint>
#include <deque>

namespace zivra::desktop {

/// The capture times of an unbroken run of sound, from measurements that waver by some milliseconds.
///
/// The time of the run's first frame is the median of what the measurements of the last second say it
/// was; after that the frames are counted. During the first second the estimate improves, and the times
/// follow it in steps too small to be heard; later they stay put until they are off by more than 40 ms, as
/// happens when the device's clock drifts from the monotonic one or frames were lost.
class SoundClock {
public:
    explicit SoundClock(int sampleRate) : m_sampleRate(sampleRate) {}

    /// The time of the next frame, of which a measurement says `measured`; `frames` follow from there.
    [[nodiscard]] MediaTime advance(MediaTime measured, std::int64_t frames);

private:
    struct Estimate {
        std::int64_t position; ///< in frames from the run's first
        std::int64_t origin;   ///< nanoseconds
    };

    [[nodiscard]] std::int64_t medianOrigin() const;

    int m_sampleRate;
    std::int64_t m_position = 0; ///< frames counted
    std::int64_t m_origin = 0;   ///< nanoseconds; the time of the run's first frame
    std::deque<Estimate> m_recent;
};

} // namespace zivra::desktop
