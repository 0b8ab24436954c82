#pragma once

#include "platform/CaptureSources.h"
#include "support/Eventually.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <complex>
#include <mutex>
#include <numbers>
#include <vector>

namespace zivra::desktop::test {

/// A running source and the first channel of all that it has delivered. Expects every block to follow on the
/// one before to a few milliseconds, in one format.
class SoundRecording {
public:
    explicit SoundRecording(std::unique_ptr<CaptureSource> source) : m_source(std::move(source))
    {
        const auto started = m_source->start([this](const MediaSample &sample) { take(sample); },
                                             [](const std::exception_ptr &) { ADD_FAILURE() << "ended"; });
        EXPECT_TRUE(eventually([&] { return started.isFinished() && format(); }));
    }

    [[nodiscard]] std::optional<AudioFormat> format() const
    {
        const std::scoped_lock held(m_mutex);
        return m_format;
    }
    /// Amplitude of a tone in the latest 0.3 s; 0 as long as less was recorded.
    [[nodiscard]] double level(double frequency) const
    {
        const auto sound = latest();
        const double step = 2 * std::numbers::pi * frequency / format()->sampleRate;
        std::complex<double> sum;
        for (std::size_t i = 0; i < sound.size(); ++i) {
            sum += std::polar(static_cast<double>(sound[i]), step * static_cast<double>(i));
        }
        return sound.empty() ? 0 : 2 * std::abs(sum) / static_cast<double>(sound.size());
    }
    [[nodiscard]] bool comesToHear(double frequency) const
    {
        return eventually([&] { return level(frequency) > 0.2; });
    }
    [[nodiscard]] bool comesToBeSilent() const
    {
        return eventually([&] {
            const auto sound = latest();
            return !sound.empty() && std::ranges::all_of(sound, [](float value) { return value == 0; });
        });
    }
    /// Lets it deliver another second.
    void goOn() const
    {
        const auto until = length() + static_cast<std::size_t>(format()->sampleRate);
        EXPECT_TRUE(eventually([&] { return length() > until; }));
    }

private:
    void take(const MediaSample &sample)
    {
        const std::scoped_lock held(m_mutex);
        if (m_format) {
            EXPECT_LE(std::abs((sample.presentationTime() - m_end).nanoseconds()), 10'000'000);
            EXPECT_EQ(sample.audioFormat(), m_format);
        }
        m_format = sample.audioFormat();
        m_end = sample.presentationTime() + sample.timing().duration;
        const auto &samples = sample.audioBlock()->samples;
        for (std::size_t i = 0; i < samples.size(); i += static_cast<std::size_t>(m_format->channels)) {
            m_sound.push_back(samples[i]);
        }
    }
    [[nodiscard]] std::size_t length() const
    {
        const std::scoped_lock held(m_mutex);
        return m_sound.size();
    }
    /// The latest 0.3 s; empty as long as less was recorded.
    [[nodiscard]] std::vector<float> latest() const
    {
        const std::scoped_lock held(m_mutex);
        const auto wanted = static_cast<std::ptrdiff_t>(0.3 * m_format->sampleRate);
        return std::ssize(m_sound) < wanted ? std::vector<float>()
                                            : std::vector(m_sound.end() - wanted, m_sound.end());
    }

    mutable std::mutex m_mutex;
    std::optional<AudioFormat> m_format;
    MediaTime m_end;
    std::vector<float> m_sound;
    std::unique_ptr<CaptureSource> m_source; ///< last: it stops before the rest goes
};

} // namespace zivra::desktop::test
