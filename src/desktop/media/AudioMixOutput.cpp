#include "desktop/media/AudioMixOutput.h"

#include "desktop/media/SoftLimiter.h"

#include <algorithm>

namespace zivra::desktop {

namespace {
constexpr std::int64_t kBlockSize = 1024; // frames
}

AudioMixOutput::AudioMixOutput(ReaderProgress &progress, QString path, std::vector<int> tracks,
                               const AudioFormat &format)
    : ReaderOutput(progress),
      m_path(std::move(path)),
      m_tracks(std::move(tracks)),
      m_format(format)
{
}

void AudioMixOutput::open()
{
    for (const int track : m_tracks) {
        m_decoders.push_back(std::make_unique<TrackDecoder>(m_path, track, m_format));
    }
}

std::optional<MediaSample> AudioMixOutput::readNext()
{
    std::vector<std::int64_t> prepared;
    for (const auto &decoder : m_decoders) {
        prepared.push_back(decoder->prepare(kBlockSize));
    }
    const auto frames = prepared.empty() ? 0 : *std::max_element(prepared.begin(), prepared.end());
    if (frames == 0) {
        return std::nullopt;
    }
    AudioBlock block{.format = m_format,
                     .samples = std::vector<float>(static_cast<std::size_t>(frames * m_format.channels))};
    for (std::size_t i = 0; i < m_decoders.size(); ++i) {
        m_decoders[i]->addTo(
            std::span(block.samples).first(static_cast<std::size_t>(prepared[i] * m_format.channels)));
    }
    std::transform(block.samples.begin(), block.samples.end(), block.samples.begin(), softLimit);

    const AVRational timeBase{1, static_cast<int>(m_format.sampleRate)};
    const SampleTiming timing{
        .presentation = timeFrom(m_position, timeBase), .decode = {}, .duration = timeFrom(frames, timeBase)};
    m_position += frames;
    return MediaSample(std::make_shared<const AudioBlock>(std::move(block)), timing);
}

} // namespace zivra::desktop
