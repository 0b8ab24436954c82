#include "desktop/media/TestMovie.h"

#include <cmath>
#include <numbers>

namespace zivra::test {

VideoSettings videoSettings(VideoCodec codec)
{
    return {.codec = codec, .width = kWidth, .height = kHeight, .averageBitRate = 2'000'000};
}

MediaSample numberedFrame(int number, double seconds, int width)
{
    const auto luma = static_cast<std::size_t>(width * kHeight);
    auto pixels = std::make_shared<std::vector<std::uint8_t>>(luma * 3 / 2, std::uint8_t{128});
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < width; ++x) {
            const int stripe = x * 12 / width;
            (*pixels)[static_cast<std::size_t>(y * width + x)] = (number >> stripe & 1) != 0 ? 220 : 30;
        }
    }
    VideoFrame frame{.width = width, .height = kHeight, .planes = {}, .storage = pixels, .changed = {}};
    frame.planes = {{{pixels->data(), width},
                     {pixels->data() + luma, width / 2},
                     {pixels->data() + luma * 5 / 4, width / 2}}};
    return {std::make_shared<const VideoFrame>(std::move(frame)),
            {kSessionStart + MediaTime::fromSeconds(seconds), {}, {}},
            FrameStatus::Complete};
}

MediaSample soundBlock(double seconds, double duration, const SoundOptions &options)
{
    const double rate = options.format.sampleRate;
    const auto channels = static_cast<std::size_t>(options.format.channels);
    const auto frames = static_cast<std::size_t>(std::lround(duration * rate));
    AudioBlock block{options.format, std::vector<float>(frames * channels)};
    for (std::size_t i = 0; i < block.samples.size(); ++i) {
        const double time = seconds + static_cast<double>(i / channels) / rate;
        block.samples[i] = options.toneLevel * float(std::sin(2 * std::numbers::pi * 440 * time));
        for (const double click : options.clicks) {
            if (std::lround((time - click) * rate) == 0) {
                block.samples[i] = 0.9F;
            }
        }
    }
    return {std::make_shared<const AudioBlock>(std::move(block)),
            {kSessionStart + MediaTime::fromSeconds(seconds), {}, MediaTime::fromSeconds(duration)}};
}

} // namespace zivra::test
