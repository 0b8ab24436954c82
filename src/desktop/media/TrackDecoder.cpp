#include "desktop/media/TrackDecoder.h"

#include "desktop/media/MovieFile.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>

extern "C" {
#include <libavutil/samplefmt.h>
#include <libswresample/swresample.h>
}

namespace zivra::desktop {

namespace {

/// Files tell times exactly; what is less is rounding.
constexpr double kTolerance = 0.001; // seconds
const auto kDecodeFailure = QStringLiteral("The sound can’t be decoded");

/// As interleaved floats. The native decoders give planar floats; whatever else there is comes from
/// other makers' files.
std::vector<float> interleaved(AVFrame &frame)
{
    const auto channels = static_cast<std::size_t>(frame.ch_layout.nb_channels);
    const auto count = static_cast<std::size_t>(frame.nb_samples);
    std::vector<float> samples(count * channels);
    if (frame.format == AV_SAMPLE_FMT_FLTP) {
        for (std::size_t channel = 0; channel < channels; ++channel) {
            const auto *plane = reinterpret_cast<const float *>(frame.extended_data[channel]);
            for (std::size_t i = 0; i < count; ++i) {
                samples[i * channels + channel] = plane[i];
            }
        }
        return samples;
    }
    SwrContext *context = nullptr;
    checked(swr_alloc_set_opts2(&context, &frame.ch_layout, AV_SAMPLE_FMT_FLT, frame.sample_rate,
                                &frame.ch_layout, static_cast<AVSampleFormat>(frame.format),
                                frame.sample_rate, 0, nullptr),
            kDecodeFailure);
    const std::unique_ptr<SwrContext, void (*)(SwrContext *)> owner(context,
                                                                    [](SwrContext *c) { swr_free(&c); });
    checked(swr_init(context), kDecodeFailure);
    auto *target = reinterpret_cast<std::uint8_t *>(samples.data());
    checked(swr_convert(context, &target, frame.nb_samples,
                        const_cast<const std::uint8_t **>(frame.extended_data), frame.nb_samples),
            kDecodeFailure);
    return samples;
}

} // namespace

TrackDecoder::TrackDecoder(const QString &path, int track, const AudioFormat &format)
    : m_path(path),
      m_track(track),
      m_input(openMovieFile(path)),
      m_packet(makePacket()),
      m_frame(makeFrame()),
      m_timeline(format, kTolerance)
{
    readOnly(*m_input, track);
    const auto *stream = m_input->streams[track];
    const AVCodec *codec = avcodec_find_decoder(stream->codecpar->codec_id);
    m_decoder.reset(avcodec_alloc_context3(codec));
    if (!m_decoder) {
        throw std::bad_alloc();
    }
    checked(avcodec_parameters_to_context(m_decoder.get(), stream->codecpar), kDecodeFailure);
    m_decoder->pkt_timebase = stream->time_base;
    checked(avcodec_open2(m_decoder.get(), codec, nullptr), kDecodeFailure);
}

std::int64_t TrackDecoder::prepare(std::int64_t frames)
{
    while (!m_atEnd && m_timeline.available() < frames) {
        decodeNextPacket();
    }
    return std::min(frames, m_timeline.available());
}

void TrackDecoder::decodeNextPacket()
{
    if (!readPacket(*m_input, m_path, *m_packet)) {
        m_atEnd = true;
        checked(avcodec_send_packet(m_decoder.get(), nullptr), kDecodeFailure);
        receiveFrames();
        m_timeline.drain();
    } else if (m_packet->stream_index == m_track) {
        checked(avcodec_send_packet(m_decoder.get(), m_packet.get()), kDecodeFailure);
        receiveFrames();
    }
}

void TrackDecoder::receiveFrames()
{
    for (;;) {
        const int result = avcodec_receive_frame(m_decoder.get(), m_frame.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF) {
            return;
        }
        checked(result, kDecodeFailure);
        addFrame();
    }
}

void TrackDecoder::addFrame()
{
    const AudioFormat format{.sampleRate = static_cast<double>(m_frame->sample_rate),
                             .channels = m_frame->ch_layout.nb_channels};
    const auto timeBase = m_input->streams[m_track]->time_base;
    const auto time = timeFrom(m_frame->best_effort_timestamp, timeBase);
    const AVRational target{1, static_cast<int>(m_timeline.format().sampleRate)};
    auto samples = interleaved(*m_frame);
    // The last frame is longer than what is left of the sound: the file tells how long that is.
    const auto length = timeFrom(m_frame->pkt_duration, timeBase).seconds();
    const auto surplus = m_frame->nb_samples - std::llround(length * format.sampleRate);
    if (length > 0 && static_cast<double>(surplus) > kTolerance * format.sampleRate) {
        samples.resize(samples.size() - static_cast<std::size_t>(surplus * format.channels));
    }
    m_timeline.add(samples, format, time.isValid() ? ticksFrom(time, target) : 0);
}

void TrackDecoder::addTo(std::span<float> sum)
{
    m_scratch.resize(sum.size());
    m_timeline.read(m_scratch);
    std::transform(sum.begin(), sum.end(), m_scratch.begin(), sum.begin(), std::plus<>());
}

} // namespace zivra::desktop
