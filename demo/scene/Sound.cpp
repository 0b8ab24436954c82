#include "Sound.h"

#include <pulse/simple.h>

#include <algorithm>
#include <cmath>
#include <deque>
#include <memory>
#include <numbers>
#include <vector>

namespace zivra::scene {

namespace {

constexpr int kRate = 48000;
constexpr int kBlock = kRate / 100; ///< samples written at once: 10 ms
constexpr double kBurstHertz = 2500;
constexpr double kBurstSeconds = 0.02;

double secondsOf(Clock::time_point time)
{
    return std::chrono::duration<double>(time.time_since_epoch()).count();
}

struct FreeStream {
    void operator()(pa_simple *stream) const { pa_simple_free(stream); }
};
using Stream = std::unique_ptr<pa_simple, FreeStream>;

Stream openStream(const std::string &sink)
{
    const pa_sample_spec format{PA_SAMPLE_FLOAT32NE, kRate, 1};
    constexpr auto kUnset = static_cast<std::uint32_t>(-1);
    // A short buffer: the burst must be heard when the flash is seen.
    const pa_buffer_attr buffer{kUnset, sizeof(float) * kBlock * 4, kUnset, kUnset, kUnset};
    return Stream(pa_simple_new(nullptr, "Zivra scene", PA_STREAM_PLAYBACK,
                                sink.empty() ? nullptr : sink.c_str(), "scene", &format, nullptr, &buffer,
                                nullptr));
}

/// When the samples of the stream are heard: the median of the latest estimates, which is kept until the
/// stream has clearly slipped (after an underrun), so that the tone has no steps.
class HeardAt {
public:
    void observe(Clock::time_point now, pa_usec_t latency, long written)
    {
        constexpr std::size_t kWindow = 50;
        constexpr double kSlipSeconds = 0.005;
        m_estimates.push_back(secondsOf(now) + static_cast<double>(latency) / 1e6 -
                              static_cast<double>(written) / kRate);
        if (m_estimates.size() > kWindow) {
            m_estimates.pop_front();
        }
        std::vector<double> sorted(m_estimates.begin(), m_estimates.end());
        std::ranges::nth_element(sorted, sorted.begin() + static_cast<long>(sorted.size() / 2));
        const double median = sorted[sorted.size() / 2];
        if (m_estimates.size() < kWindow || std::abs(median - m_first) > kSlipSeconds) {
            m_first = median;
        }
    }
    [[nodiscard]] double seconds(long sample) const { return m_first + static_cast<double>(sample) / kRate; }

private:
    std::deque<double> m_estimates;
    double m_first = 0; ///< when sample 0 is heard
};

} // namespace

Sound::Sound(const SceneTime &time, double hertz, const std::string &sink)
    : m_time(time),
      m_hertz(hertz),
      m_sink(sink),
      m_thread([this] { play(); })
{
}

Sound::~Sound()
{
    m_ended = true;
    m_thread.join();
}

void Sound::play()
{
    const Stream stream = openStream(m_sink);
    const double start = secondsOf(m_time.start);
    HeardAt heard;
    std::vector<float> block(kBlock);
    for (long written = 0; stream && !m_ended; written += kBlock) {
        heard.observe(Clock::now(), pa_simple_get_latency(stream.get(), nullptr), written);
        for (int index = 0; index < kBlock; ++index) {
            const double time = heard.seconds(written + index) - start;
            const double second = time - std::floor(time);
            const double tone = 0.2 * std::sin(2 * std::numbers::pi * m_hertz * time);
            const double burst =
                second < kBurstSeconds ? 0.6 * std::sin(2 * std::numbers::pi * kBurstHertz * second) : 0;
            block[static_cast<std::size_t>(index)] = static_cast<float>(tone + burst);
        }
        if (pa_simple_write(stream.get(), block.data(), block.size() * sizeof(float), nullptr) < 0) {
            return;
        }
    }
}

} // namespace zivra::scene
