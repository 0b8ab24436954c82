#pragma once

#include "platform/MediaTime.h"

#include <algorithm>

namespace zivra::desktop {

/// Decides when the next frame may come: on average never more often than the interval allows.
///
/// A frame that was read a little late (the thread woke up late) does not push the following ones back, else
/// a picture that changes exactly as often as frames are allowed would lose one every few seconds.
class FramePacer {
public:
    explicit FramePacer(MediaTime interval) : m_interval(interval) {}

    /// No frame before this.
    [[nodiscard]] MediaTime due() const { return m_due; }
    void frameTaken(MediaTime now)
    {
        const auto forgiven = MediaTime::fromNanoseconds(m_interval.nanoseconds() / 4);
        m_due = std::max(m_due, now - forgiven) + m_interval;
    }
    /// Nothing turned out to have changed: limits how often one looks while, say, the mouse moves elsewhere.
    void nothingFound(MediaTime now)
    {
        m_due = std::max(m_due, now + MediaTime::fromNanoseconds(m_interval.nanoseconds() / 2));
    }

private:
    MediaTime m_interval;
    MediaTime m_due = MediaTime::zero();
};

} // namespace zivra::desktop
