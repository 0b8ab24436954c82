#include "desktop/media/SoundTimeline.h"

#include <algorithm>
#include <cmath>

namespace zivra::desktop {

SoundTimeline::SoundTimeline(const AudioFormat &format, double tolerance)
    : m_format(format),
      m_tolerance(std::llround(tolerance * format.sampleRate))
{
}

void SoundTimeline::add(std::span<const float> samples, const AudioFormat &format, std::int64_t position)
{
    useFormat(format);
    const auto channels = static_cast<std::size_t>(format.channels);
    const auto ahead = position - (m_end + m_resampler->delay());
    const auto tolerance = m_hasSound ? m_tolerance : 0; // the first piece's place is kept exactly
    if (ahead > tolerance) {
        addSilenceUntil(position);
    } else if (ahead < -tolerance) {
        const auto skipped = static_cast<std::size_t>(
            std::llround(static_cast<double>(-ahead) * format.sampleRate / m_format.sampleRate));
        samples = samples.subspan(std::min(skipped * channels, samples.size()));
    }
    if (samples.empty()) {
        return;
    }
    m_hasSound = true;
    std::vector<float> converted;
    m_resampler->convert(samples, converted);
    append(std::move(converted), 0);
}

void SoundTimeline::useFormat(const AudioFormat &format)
{
    if (m_resampler && m_resampler->from() == format) {
        return;
    }
    drain();
    m_resampler.emplace(format, m_format);
}

void SoundTimeline::drain()
{
    if (m_resampler) {
        std::vector<float> rest;
        m_resampler->drain(rest);
        append(std::move(rest), 0);
    }
}

void SoundTimeline::addSilenceUntil(std::int64_t position)
{
    if (m_resampler && position <= m_end + m_resampler->delay()) {
        return;
    }
    drain();
    if (position > m_end) {
        append({}, static_cast<std::size_t>((position - m_end) * m_format.channels));
    }
}

void SoundTimeline::append(std::vector<float> samples, std::size_t silence)
{
    m_end += static_cast<std::int64_t>(samples.size() + silence) / m_format.channels;
    m_segments.push_back({.samples = std::move(samples), .silence = silence});
}

void SoundTimeline::read(std::span<float> target)
{
    m_begin += static_cast<std::int64_t>(target.size()) / m_format.channels;
    while (!target.empty()) {
        auto &segment = m_segments.front();
        const auto count = std::min(target.size(), segment.size());
        const auto start = std::min(segment.consumed, segment.samples.size());
        const auto sounding = std::min(count, segment.samples.size() - start);
        std::copy_n(segment.samples.begin() + static_cast<std::ptrdiff_t>(start), sounding, target.begin());
        std::fill_n(target.begin() + static_cast<std::ptrdiff_t>(sounding), count - sounding, 0.0F);
        segment.consumed += count;
        target = target.subspan(count);
        if (segment.size() == 0) {
            m_segments.pop_front();
        }
    }
}

} // namespace zivra::desktop
