#pragma once

#include "platform/MediaTime.h"

namespace zivra {

/// The monotonic clock that every capture time lies on. May be read from any thread.
class MediaClock {
public:
    virtual ~MediaClock() = default;

    [[nodiscard]] virtual MediaTime now() const = 0;
};

} // namespace zivra
