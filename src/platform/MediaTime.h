#pragma once

#include <compare>
#include <cstdint>
#include <limits>

namespace zivra {

/// A point in time or a span, in whole nanoseconds, with a distinct invalid value.
///
/// Capture times lie on the system's monotonic clock (CLOCK_MONOTONIC), file times on the timeline
/// of a movie. An invalid time takes part in no arithmetic: sums and differences with it are invalid,
/// and comparing with it other than for equality has no meaning.
class MediaTime {
public:
    constexpr MediaTime() = default;

    static constexpr MediaTime invalid() { return {}; }
    static constexpr MediaTime zero() { return MediaTime{0}; }
    static constexpr MediaTime fromNanoseconds(std::int64_t nanoseconds) { return MediaTime{nanoseconds}; }
    static constexpr MediaTime fromMilliseconds(std::int64_t milliseconds)
    {
        return MediaTime{milliseconds * 1'000'000};
    }
    /// `value` divided by `timescale` seconds, rounded down; `timescale` is positive.
    static constexpr MediaTime fromFraction(std::int64_t value, std::int64_t timescale)
    {
        return MediaTime{value / timescale * kPerSecond + value % timescale * kPerSecond / timescale};
    }
    /// Rounded to the nearest nanosecond; `seconds` is finite.
    static constexpr MediaTime fromSeconds(double seconds)
    {
        return MediaTime{static_cast<std::int64_t>(seconds * kPerSecond + (seconds < 0 ? -0.5 : 0.5))};
    }

    [[nodiscard]] constexpr bool isValid() const { return m_nanoseconds != kInvalid; }
    [[nodiscard]] constexpr std::int64_t nanoseconds() const { return m_nanoseconds; }
    [[nodiscard]] constexpr double seconds() const
    {
        return static_cast<double>(m_nanoseconds) / static_cast<double>(kPerSecond);
    }

    friend constexpr MediaTime operator+(MediaTime a, MediaTime b)
    {
        return a.isValid() && b.isValid() ? MediaTime{a.m_nanoseconds + b.m_nanoseconds} : invalid();
    }
    friend constexpr MediaTime operator-(MediaTime a, MediaTime b)
    {
        return a.isValid() && b.isValid() ? MediaTime{a.m_nanoseconds - b.m_nanoseconds} : invalid();
    }
    friend constexpr auto operator<=>(MediaTime, MediaTime) = default;

private:
    static constexpr std::int64_t kPerSecond = 1'000'000'000;
    static constexpr std::int64_t kInvalid = std::numeric_limits<std::int64_t>::min();

    constexpr explicit MediaTime(std::int64_t nanoseconds) : m_nanoseconds(nanoseconds) {}

    std::int64_t m_nanoseconds = kInvalid;
};

/// A stretch of a movie's timeline: `start` inclusive, `duration` not negative.
struct MediaTimeRange {
    MediaTime start;
    MediaTime duration;
};

} // namespace zivra
