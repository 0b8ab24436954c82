#include "desktop/audio/SoundClock.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace zivra::desktop {

namespace {

constexpr std::int64_t kReanchorBeyond = 40'000'000; // ns
constexpr std::int64_t kLargestStep = 2'000'000;     // ns

} // namespace

MediaTime SoundClock::advance(MediaTime measured, std::int64_t frames)
{
    const auto elapsed = MediaTime::fromFraction(m_position, m_sampleRate);
    m_recent.push_back({m_position, (measured - elapsed).nanoseconds()});
    while (m_recent.front().position < m_position - m_sampleRate) {
        m_recent.pop_front();
    }
    const auto error = medianOrigin() - m_origin;
    if (m_position == 0 || std::abs(error) > kReanchorBeyond) {
        m_origin += error;
    } else if (m_position < m_sampleRate) {
        m_origin += std::clamp(error, -kLargestStep, kLargestStep);
    }
    m_position += frames;
    return MediaTime::fromNanoseconds(m_origin) + elapsed;
}

std::int64_t SoundClock::medianOrigin() const
{
    std::vector<std::int64_t> origins;
    origins.reserve(m_recent.size());
    std::transform(m_recent.begin(), m_recent.end(), std::back_inserter(origins),
                   [](const Estimate &estimate) { return estimate.origin; });
    const auto middle = origins.begin() + static_cast<std::ptrdiff_t>(origins.size() / 2);
    std::nth_element(origins.begin(), middle, origins.end());
    return *middle;
}

} // namespace zivra::desktop
