#pragma once

#include "platform/MediaTime.h"

#include <ctime>

namespace zivra::desktop {

/// The time on CLOCK_MONOTONIC, which every capture time lies on: those of the X server, of the sound server
/// and of cameras.
inline MediaTime monotonicTime()
{
    std::timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return MediaTime::fromNanoseconds(time.tv_sec * std::int64_t{1'000'000'000} + time.tv_nsec);
}

} // namespace zivra::desktop
