#include "desktop/audio/ContinuousSound.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace zivra::desktop {

namespace {

constexpr auto kBlock = MediaTime::fromMilliseconds(20);
/// Smaller breaks and overlaps are left to the time stamps: they come from the clock's small steps.
constexpr auto kTolerance = MediaTime::fromMilliseconds(10);

} // namespace

ContinuousSound::ContinuousSound(const AudioFormat &format, CaptureSource::SampleHandler handler)
    : m_format(format),
      m_handler(std::move(handler)),
      m_blockFrames(framesIn(kBlock))
{
}

void ContinuousSound::deliver(MediaTime start, const float *samples, std::size_t frames)
{
    if (m_end.isValid() && start > m_end + kTolerance) {
        fill(start);
        deliverBlocks(nullptr, framesIn(start - m_end));
    } else if (m_end.isValid() && start + kTolerance < m_end) {
        const auto late = std::min(framesIn(m_end - start), frames);
        samples = samples != nullptr ? samples + late * static_cast<std::size_t>(m_format.channels) : nullptr;
        frames -= late;
        start = m_end;
    }
    if (frames > 0) {
        m_end = start;
        deliverBlocks(samples, frames);
    }
}

void ContinuousSound::fill(MediaTime until)
{
    while (m_end + kBlock <= until) {
        deliverBlocks(nullptr, m_blockFrames);
    }
}

void ContinuousSound::deliverBlocks(const float *samples, std::size_t frames)
{
    const auto channels = static_cast<std::size_t>(m_format.channels);
    const auto start = m_end;
    for (std::size_t done = 0; done < frames; done += m_blockFrames) {
        const auto count = std::min(m_blockFrames, frames - done);
        auto block = std::make_shared<AudioBlock>();
        block->format = m_format;
        if (samples != nullptr) {
            block->samples.assign(samples + done * channels, samples + (done + count) * channels);
        } else {
            block->samples.resize(count * channels);
        }
        const auto time = start + durationOf(done);
        m_end = start + durationOf(done + count);
        m_handler(MediaSample(std::shared_ptr<const AudioBlock>(std::move(block)),
                              {.presentation = time, .decode = {}, .duration = m_end - time}));
    }
}

MediaTime ContinuousSound::durationOf(std::size_t frames) const
{
    return MediaTime::fromFraction(static_cast<std::int64_t>(frames), std::lround(m_format.sampleRate));
}

std::size_t ContinuousSound::framesIn(MediaTime duration) const
{
    return static_cast<std::size_t>(std::llround(duration.seconds() * m_format.sampleRate));
}

} // namespace zivra::desktop
