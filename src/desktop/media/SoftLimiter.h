#pragma once

#include <cmath>

namespace zivra::desktop {

/// Leaves a sample as it is up to -1 dB of full scale and bends what is louder smoothly to stay below
/// -0.1 dB: sums of tracks do not clip.
inline float softLimit(float sample)
{
    constexpr float kThreshold = 0.891F;
    constexpr float kRoom = 0.989F - kThreshold;
    const float level = std::abs(sample);
    if (level <= kThreshold) {
        return sample;
    }
    return std::copysign(kThreshold + kRoom * std::tanh((level - kThreshold) / kRoom), sample);
}

} // namespace zivra::desktop
