#pragma once

#include "desktop/threads/MonotonicTime.h"
#include "platform/MediaClock.h"

namespace zivra::desktop {

/// The clock of every capture time.
class MonotonicClock final : public MediaClock {
public:
    [[nodiscard]] MediaTime now() const override { return monotonicTime(); }
};

} // namespace zivra::desktop
