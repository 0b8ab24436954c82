#include "Sound.h"

#include <pulse/simple.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <numbers>
#include <vector>

namespace zivra::scene {

namespace {

constexpr int kRate = 48000;
constexpr int kBlock = kRate / 100;
constexpr double kBurstHertz = 2500;
constexpr double kBurstSeconds = 0.02;

struct FreeStream {
    void operator()(pa_simple *stream) const { pa_simple_free(stream); }
};
using Stream = std::unique_ptr<pa_simple, FreeStream>;

Stream openStream(const std::string &sink)
{
    const pa_sample_spec format{PA_SAMPLE_FLOAT32NE, kRate, 1};
    constexpr auto kUnset = static_cast<std::uint32_t>(-1);
    // A short buffer: the burst must be heard when the flash is seen.
    const pa_buffer_attr buffer{kUnset, kBlock * 4 * sizeof(float), kUnset, kUnset, kUnset};
    return Stream(pa_simple_new(nullptr, "Zivra scene", PA_STREAM_PLAYBACK,
                                sink.empty() ? nullptr : sink.c_str(), "scene", &format, nullptr, &buffer,
                                nullptr));
}

/// When sample 0 of the stream is heard, estimated anew until it can be trusted.
class HeardAt {
public:
    void observe(Clock::time_point now, pa_usec_t latency, long written)
    {
        constexpr std::size_t kEnough = 60;
        if (m_estimates.size() < kEnough) {
            m_estimates.push_back(now.time_since_epoch().count() / 1e9 + static_cast<double>(latency) / 1e6 -
                                  static_cast<double>(written) / kRate);
            std::ranges::nth_element(m_estimates, m_estimates.begin() + m_estimates.size() / 2);
        }
    }
    [[nodiscard]] double seconds(long sample) const
    {
        return m_estimates[m_estimates.size() / 2] + static_cast<double>(sample) / kRate;
    }

private:
    std::vector<double> m_estimates;
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
    const double start = m_time.start.time_since_epoch().count() / 1e9;
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
