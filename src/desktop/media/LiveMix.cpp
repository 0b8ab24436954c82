#include "desktop/media/LiveMix.h"

#include "desktop/media/SoftLimiter.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <utility>

namespace zivra::desktop {

namespace {

constexpr AudioSettings kSettings{.sampleRate = 48000, .channels = 2, .bitRate = 160'000};
constexpr AudioFormat kFormat{.sampleRate = kSettings.sampleRate, .channels = kSettings.channels};
constexpr std::int64_t kBlockSize = 1024; // frames
/// The sounds come without breaks: what a place is off by is rounding.
constexpr double kTolerance = 0.001; // seconds

} // namespace

LiveMix::LiveMix(std::size_t sounds, TrackEncoder::PacketSink sink) : m_encoder(kSettings)
{
    for (std::size_t i = 0; i < sounds; ++i) {
        m_lanes.push_back({.timeline = SoundTimeline(kFormat, kTolerance)});
    }
    m_encoder.open(true, std::move(sink));
}

void LiveMix::add(std::size_t sound, std::span<const float> samples, const AudioFormat &format)
{
    auto &lane = m_lanes.at(sound);
    const AVRational timeBase{1, static_cast<int>(std::lround(format.sampleRate))};
    lane.timeline.add(samples, format, av_rescale_q(lane.added, timeBase, m_encoder.timeBase()));
    lane.added += static_cast<std::int64_t>(samples.size()) / format.channels;
    const auto hasBlock = [](const Lane &each) { return each.timeline.available() >= kBlockSize; };
    while (std::ranges::all_of(m_lanes, hasBlock)) {
        mix(kBlockSize);
    }
}

void LiveMix::finish()
{
    for (auto &lane : m_lanes) {
        lane.timeline.drain();
    }
    const auto available = [](const Lane &lane) { return lane.timeline.available(); };
    while (const auto rest = available(*std::ranges::max_element(m_lanes, {}, available))) {
        mix(std::min(rest, kBlockSize));
    }
    m_encoder.finish();
}

void LiveMix::mix(std::int64_t frames)
{
    AudioBlock block{.format = kFormat,
                     .samples = std::vector<float>(static_cast<std::size_t>(frames * kFormat.channels))};
    for (auto &lane : m_lanes) {
        m_scratch.resize(
            static_cast<std::size_t>(std::min(frames, lane.timeline.available()) * kFormat.channels));
        lane.timeline.read(m_scratch);
        std::ranges::transform(m_scratch, block.samples, block.samples.begin(), std::plus());
    }
    std::ranges::transform(block.samples, block.samples.begin(), softLimit);
    const MediaSample sample(std::make_shared<const AudioBlock>(std::move(block)), {});
    m_encoder.encode(sample, timeFrom(std::exchange(m_position, m_position + frames), m_encoder.timeBase()));
}

} // namespace zivra::desktop
