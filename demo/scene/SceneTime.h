#pragma once

#include <chrono>

namespace zivra::scene {

using Clock = std::chrono::steady_clock;

/// Picture and sound both count from here. Once a second, at a whole second, the picture flashes and the
/// sound bursts.
struct SceneTime {
    Clock::time_point start;
    int framesPerSecond = 30;

    [[nodiscard]] Clock::time_point timeOf(int frame) const
    {
        return start + std::chrono::duration_cast<Clock::duration>(
                           std::chrono::duration<double>(static_cast<double>(frame) / framesPerSecond));
    }
};

} // namespace zivra::scene
