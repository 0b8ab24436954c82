#include "desktop/audio/PulseRecordStream.h"

#include <chrono>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <utility>

namespace zivra::desktop {

namespace {

constexpr pa_usec_t kFragment = 20 * PA_USEC_PER_MSEC;

MediaTime now()
{
    const auto sinceBoot = std::chrono::steady_clock::now().time_since_epoch();
    return MediaTime::fromNanoseconds(std::chrono::nanoseconds(sinceBoot).count());
}

/// How long ago the next frame to be read was captured. Negative for the monitor of an output that has
/// yet to play it. Absent before the server has told its times.
std::optional<MediaTime> latencyOf(pa_stream *stream)
{
    pa_usec_t latency = 0;
    int isNegative = 0;
    if (pa_stream_get_latency(stream, &latency, &isNegative) < 0) {
        return std::nullopt;
    }
    const auto nanoseconds = static_cast<std::int64_t>(latency) * 1000;
    return MediaTime::fromNanoseconds(isNegative != 0 ? -nanoseconds : nanoseconds);
}

} // namespace

PulseRecordStream::PulseRecordStream(pa_context *context, std::string inputName, const AudioFormat &format,
                                     const pa_channel_map &channelMap, const char *title,
                                     SoundHandler onSound)
    : m_inputName(std::move(inputName)),
      m_sampleSpec{.format = PA_SAMPLE_FLOAT32NE,
                   .rate = static_cast<std::uint32_t>(std::lround(format.sampleRate)),
                   .channels = static_cast<std::uint8_t>(format.channels)},
      m_onSound(std::move(onSound)),
      m_clock(static_cast<int>(m_sampleSpec.rate)),
      m_stream(pa_stream_new(context, title, &m_sampleSpec, &channelMap))
{
    if (!m_stream) {
        m_isLost = true;
        return;
    }
    auto *stream = m_stream.get();
    pa_stream_set_state_callback(
        stream, [](pa_stream *, void *self) { from(self).stateChanged(); }, this);
    pa_stream_set_moved_callback(
        stream, [](pa_stream *, void *self) { from(self).stateChanged(); }, this);
    pa_stream_set_read_callback(
        stream, [](pa_stream *, std::size_t, void *self) { from(self).read(); }, this);

    constexpr auto kServersChoice = std::numeric_limits<std::uint32_t>::max();
    const pa_buffer_attr buffer{.maxlength = kServersChoice,
                                .tlength = kServersChoice,
                                .prebuf = kServersChoice,
                                .minreq = kServersChoice,
                                .fragsize =
                                    static_cast<std::uint32_t>(pa_usec_to_bytes(kFragment, &m_sampleSpec))};
    const auto flags =
        static_cast<pa_stream_flags_t>(PA_STREAM_DONT_MOVE | PA_STREAM_ADJUST_LATENCY |
                                       PA_STREAM_AUTO_TIMING_UPDATE | PA_STREAM_INTERPOLATE_TIMING);
    if (pa_stream_connect_record(stream, m_inputName.c_str(), &buffer, flags) < 0) {
        m_isLost = true;
    }
}

void PulseRecordStream::restartClock()
{
    m_clock = SoundClock(static_cast<int>(m_sampleSpec.rate));
}

void PulseRecordStream::stateChanged()
{
    const auto state = pa_stream_get_state(m_stream.get());
    if (!PA_STREAM_IS_GOOD(state) || (state == PA_STREAM_READY && !recordsItsInput())) {
        m_isLost = true;
    }
}

bool PulseRecordStream::recordsItsInput() const
{
    const char *name = pa_stream_get_device_name(m_stream.get());
    return name != nullptr && m_inputName == name;
}

void PulseRecordStream::read()
{
    while (!m_isLost && pa_stream_readable_size(m_stream.get()) > 0) {
        const auto latency = latencyOf(m_stream.get());
        const void *data = nullptr;
        std::size_t bytes = 0;
        // Without a latency the sound waits in the stream: the answer is a few milliseconds away.
        if (!latency || pa_stream_peek(m_stream.get(), &data, &bytes) < 0 || bytes == 0) {
            return;
        }
        pass(now() - *latency, data, bytes);
        pa_stream_drop(m_stream.get());
    }
}

void PulseRecordStream::pass(MediaTime measured, const void *data, std::size_t bytes)
{
    const auto frames = bytes / pa_frame_size(&m_sampleSpec);
    const auto start = m_clock.advance(measured, static_cast<std::int64_t>(frames));
    m_onSound(start, static_cast<const float *>(data), frames);
}

} // namespace zivra::desktop
