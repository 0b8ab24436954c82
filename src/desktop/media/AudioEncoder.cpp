#include "desktop/media/AudioEncoder.h"

#include "platform/PlatformError.h"

#include <algorithm>
#include <cmath>
#include <new>

extern "C" {
#include <libavutil/opt.h>
}

namespace zivra::desktop {

namespace {

constexpr int kFrameSize = 1024; ///< of AAC
/// Blocks that are off by less follow each other without a break.
constexpr double kTolerance = 0.010; // seconds
const auto kSoundFailure = QStringLiteral("The sound can’t be encoded");

} // namespace

AudioEncoder::AudioEncoder(const AudioSettings &settings)
    : m_settings(settings),
      m_rate(static_cast<int>(std::lround(settings.sampleRate)))
{
}

void AudioEncoder::open(bool realTime, PacketSink sink)
{
    m_sink = std::move(sink);
    const AVCodec *encoder = avcodec_find_encoder_by_name("aac");
    m_codec.reset(avcodec_alloc_context3(encoder));
    if (!m_codec) {
        throw std::bad_alloc();
    }
    m_codec->sample_fmt = AV_SAMPLE_FMT_FLTP;
    m_codec->sample_rate = m_rate;
    av_channel_layout_default(&m_codec->ch_layout, m_settings.channels);
    m_codec->bit_rate = m_settings.bitRate;
    m_codec->time_base = timeBase();
    m_codec->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    if (!realTime) {
        // Several times faster at 3 dB less: where nobody paces the sound, somebody waits for it.
        checked(av_opt_set(m_codec->priv_data, "aac_coder", "fast", 0), kSoundFailure);
    }
    checked(avcodec_open2(m_codec.get(), encoder, nullptr), kSoundFailure);

    m_parameters = makeCodecParameters();
    checked(avcodec_parameters_from_context(m_parameters.get(), m_codec.get()), kSoundFailure);
    m_parameters->initial_padding = 0; // see encodePending()
}

bool AudioEncoder::accepts(const MediaSample &sample) const
{
    const auto block = sample.audioBlock();
    return block && block->format.channels > 0 && block->format.sampleRate >= 1 &&
           block->samples.size() % static_cast<std::size_t>(block->format.channels) == 0;
}

void AudioEncoder::encode(const MediaSample &sample, MediaTime time)
{
    const auto block = sample.audioBlock();
    useFormat(block->format);
    const auto skipped = leadingFramesToSkip(*block, ticksFrom(time, timeBase()));
    if (skipped >= block->frameCount()) {
        return;
    }
    m_hasSound = true;
    m_resampler->convert(
        std::span(block->samples).subspan(skipped * static_cast<std::size_t>(block->format.channels)),
        m_pending);
    encodeWholeFrames();
}

std::size_t AudioEncoder::leadingFramesToSkip(const AudioBlock &block, std::int64_t position)
{
    // The first block's place is kept exactly.
    const auto tolerance = m_hasSound ? std::llround(kTolerance * m_rate) : 0;
    const auto ahead = position - (framesWritten() + m_resampler->delay());
    if (ahead > tolerance) {
        m_resampler->drain(m_pending);
        addSilence(position - framesWritten());
    } else if (ahead < -tolerance) {
        return static_cast<std::size_t>(
            std::llround(static_cast<double>(-ahead) * block.format.sampleRate / m_rate));
    }
    return 0;
}

void AudioEncoder::useFormat(const AudioFormat &format)
{
    if (m_resampler && m_resampler->from() == format) {
        return;
    }
    if (m_resampler) {
        m_resampler->drain(m_pending);
    }
    m_resampler.emplace(format, AudioFormat{.sampleRate = double(m_rate), .channels = m_settings.channels});
}

void AudioEncoder::fillUntil(MediaTime time)
{
    if (!m_hasSound) {
        addSilence(ticksFrom(time, timeBase()) - framesWritten());
    }
}

void AudioEncoder::addSilence(std::int64_t frames)
{
    while (frames > 0) {
        const auto count = std::min<std::int64_t>(frames, kFrameSize);
        m_pending.resize(m_pending.size() + static_cast<std::size_t>(count * m_settings.channels));
        encodeWholeFrames();
        frames -= count;
    }
}

std::int64_t AudioEncoder::framesWritten() const
{
    return m_framesEncoded + static_cast<std::int64_t>(m_pending.size()) / m_settings.channels;
}

void AudioEncoder::encodeWholeFrames()
{
    while (m_pending.size() >= static_cast<std::size_t>(kFrameSize * m_settings.channels)) {
        encodePending(kFrameSize);
    }
}

void AudioEncoder::encodePending(int frames)
{
    auto frame = makeFrame();
    frame->format = AV_SAMPLE_FMT_FLTP;
    frame->sample_rate = m_rate;
    frame->nb_samples = frames;
    frame->pts = m_framesEncoded;
    if (av_channel_layout_copy(&frame->ch_layout, &m_codec->ch_layout) < 0 ||
        av_frame_get_buffer(frame.get(), 0) < 0) {
        throw std::bad_alloc();
    }
    const int channels = m_settings.channels;
    for (int channel = 0; channel < channels; ++channel) {
        auto *plane = reinterpret_cast<float *>(frame->extended_data[channel]);
        for (int i = 0; i < frames; ++i) {
            plane[i] = m_pending[static_cast<std::size_t>(i * channels + channel)];
        }
    }
    m_pending.erase(m_pending.begin(), m_pending.begin() + frames * channels);
    m_framesEncoded += frames;
    encodeFrame(*m_codec, frame.get(), [this](PacketPtr packet) {
        // The encoder primes itself with a packet that lies before the start. Fragmented files have no
        // sure way to hide it, so it is left out: the sound stays in its place everywhere, and its first
        // 21 ms rise from silence.
        if (packet->pts >= 0) {
            m_sink(std::move(packet));
        }
    });
}

void AudioEncoder::finish()
{
    if (m_resampler) {
        m_resampler->drain(m_pending);
        encodeWholeFrames();
    }
    if (!m_pending.empty()) {
        encodePending(static_cast<int>(m_pending.size()) / m_settings.channels);
    }
    encodeFrame(*m_codec, nullptr, m_sink);
}

} // namespace zivra::desktop
