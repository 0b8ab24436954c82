#pragma once

#include "platform/MediaClock.h"

#include <ctime>

namespace zivra::desktop {

/// The system's CLOCK_MONOTONIC, which the X server's, the sound server's and the camera's times lie on too.
class MonotonicClock final : public MediaClock {
public:
    [[nodiscard]] MediaTime now() const override
    {
        std::timespec time{};
        clock_gettime(CLOCK_MONOTONIC, &time);
        return MediaTime::fromNanoseconds(time.tv_sec * std::int64_t{1'000'000'000} + time.tv_nsec);
    }
};

} // namespace zivra::desktop
