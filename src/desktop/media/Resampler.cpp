#include "desktop/media/Resampler.h"

#include "desktop/media/FFmpegHandles.h"

#include <cmath>

extern "C" {
#include <libswresample/swresample.h>
}

namespace zivra::desktop {

namespace {
const auto kResampleFailure = QStringLiteral("The sound can’t be converted");
}

void Resampler::SwrDeleter::operator()(SwrContext *context) const
{
    swr_free(&context);
}

Resampler::Resampler(const AudioFormat &from, const AudioFormat &to) : m_from(from), m_to(to)
{
    if (from == to) {
        return;
    }
    AVChannelLayout source{};
    AVChannelLayout target{};
    av_channel_layout_default(&source, from.channels);
    av_channel_layout_default(&target, to.channels);
    SwrContext *context = nullptr;
    checked(swr_alloc_set_opts2(&context, &target, AV_SAMPLE_FMT_FLT,
                                static_cast<int>(std::lround(to.sampleRate)), &source, AV_SAMPLE_FMT_FLT,
                                static_cast<int>(std::lround(from.sampleRate)), 0, nullptr),
            kResampleFailure);
    m_context.reset(context);
    if (from.channels == 1) {
        // The default would lower a single channel by 3 dB on each of two.
        const std::vector<double> unity(static_cast<std::size_t>(to.channels), 1.0);
        checked(swr_set_matrix(context, unity.data(), 1), kResampleFailure);
    }
    initialise();
}

void Resampler::initialise()
{
    checked(swr_init(m_context.get()), kResampleFailure);
}

void Resampler::convert(std::span<const float> input, std::vector<float> &output)
{
    if (!m_context) {
        output.insert(output.end(), input.begin(), input.end());
        return;
    }
    run(input.data(), static_cast<int>(input.size()) / m_from.channels, output);
}

void Resampler::drain(std::vector<float> &output)
{
    if (m_context) {
        run(nullptr, 0, output);
        initialise();
    }
}

void Resampler::run(const float *input, int frames, std::vector<float> &output)
{
    const auto channels = static_cast<std::size_t>(m_to.channels);
    const int room = checked(swr_get_out_samples(m_context.get(), frames), kResampleFailure);
    const auto before = output.size();
    output.resize(before + static_cast<std::size_t>(room) * channels);
    auto *target = reinterpret_cast<std::uint8_t *>(output.data() + before);
    const auto *source = reinterpret_cast<const std::uint8_t *>(input);
    const int made =
        checked(swr_convert(m_context.get(), &target, room, input != nullptr ? &source : nullptr, frames),
                kResampleFailure);
    output.resize(before + static_cast<std::size_t>(made) * channels);
}

std::int64_t Resampler::delay() const
{
    return m_context ? swr_get_delay(m_context.get(), std::lround(m_to.sampleRate)) : 0;
}

} // namespace zivra::desktop
