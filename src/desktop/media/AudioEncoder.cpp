#include "desktop/media/AudioEncoder.h"

#include "platform/PlatformError.h"

#include <cmath>
#include <new>

extern "C" {
#include <libavutil/opt.h>
}

namespace zivra::desktop {

namespace {

constexpr int kFrameSize = 1024; // of AAC
/// Real sources jitter by this much; what is more is a gap.
constexpr double kTolerance = 0.010; // seconds
/// Noise takes the bit rate that is asked for, everything else less.
constexpr int kQuality = FF_QP2LAMBDA * 3 / 2;
const auto kSoundFailure = QStringLiteral("The sound can’t be encoded");

} // namespace

AudioEncoder::AudioEncoder(const AudioSettings &settings)
    : m_settings(settings),
      m_rate(static_cast<int>(std::lround(settings.sampleRate))),
      m_timeline({.sampleRate = static_cast<double>(m_rate), .channels = settings.channels}, kTolerance)
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
        // Several times faster at 3 dB less: where nobody paces the sound, somebody waits for it. At a
        // constant quality each frame is encoded once; at a constant rate up to six times, which for clear
        // tones is four times slower.
        checked(av_opt_set(m_codec->priv_data, "aac_coder", "fast", 0), kSoundFailure);
        m_codec->flags |= AV_CODEC_FLAG_QSCALE;
        m_codec->global_quality = kQuality;
    }
    checked(avcodec_open2(m_codec.get(), encoder, nullptr), kSoundFailure);

    m_parameters = makeCodecParameters();
    checked(avcodec_parameters_from_context(m_parameters.get(), m_codec.get()), kSoundFailure);
    m_parameters->initial_padding = 0; // the priming does not count as a part of the track: see passOn()
}

bool AudioEncoder::shareSound(SoundSink sink)
{
    m_listener = std::move(sink);
    return true;
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
    m_timeline.add(block->samples, block->format, ticksFrom(time, timeBase()));
    encodeWholeFrames();
}

void AudioEncoder::fillUntil(MediaTime time)
{
    m_timeline.addSilenceUntil(ticksFrom(time, timeBase()));
    encodeWholeFrames();
}

void AudioEncoder::encodeWholeFrames()
{
    while (m_timeline.available() >= kFrameSize) {
        encodeNext(kFrameSize);
    }
}

void AudioEncoder::encodeNext(int frames)
{
    auto frame = makeFrame();
    frame->format = AV_SAMPLE_FMT_FLTP;
    frame->sample_rate = m_rate;
    frame->nb_samples = frames;
    frame->pts = m_timeline.position();
    if (av_channel_layout_copy(&frame->ch_layout, &m_codec->ch_layout) < 0 ||
        av_frame_get_buffer(frame.get(), 0) < 0) {
        throw std::bad_alloc();
    }
    const auto channels = static_cast<std::size_t>(m_settings.channels);
    m_interleaved.resize(static_cast<std::size_t>(frames) * channels);
    m_timeline.read(m_interleaved);
    for (std::size_t channel = 0; channel < channels; ++channel) {
        auto *plane = reinterpret_cast<float *>(frame->extended_data[channel]);
        for (std::size_t i = 0; i < static_cast<std::size_t>(frames); ++i) {
            plane[i] = m_interleaved[i * channels + channel];
        }
    }
    if (m_listener) {
        m_listener(m_interleaved, m_timeline.format());
    }
    encodeFrame(*m_codec, frame.get(), [this](PacketPtr packet) { passOn(std::move(packet)); });
}

/// The encoder's first packet lies before the start. Without it a decoder lets the first 21 ms rise from
/// silence.
void AudioEncoder::passOn(PacketPtr packet)
{
    if (packet->pts < 0) {
        packet->flags |= AV_PKT_FLAG_DISCARD;
    }
    m_sink(std::move(packet));
}

void AudioEncoder::finish()
{
    m_timeline.drain();
    encodeWholeFrames();
    if (m_timeline.available() > 0) {
        encodeNext(static_cast<int>(m_timeline.available()));
    }
    encodeFrame(*m_codec, nullptr, [this](PacketPtr packet) { passOn(std::move(packet)); });
}

} // namespace zivra::desktop
