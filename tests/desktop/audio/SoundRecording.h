#pragma once

#include "desktop/audio/PrivateSoundServer.h"
#include "platform/CaptureSources.h"

#include <QFuture>

#include <complex>
#include <mutex>
#include <vector>

namespace zivra::desktop::test {

/// A running source and all that it has delivered.
class SoundRecording {
public:
    explicit SoundRecording(std::unique_ptr<CaptureSource> source) : m_source(std::move(source))
    {
        const auto started = m_source->start(
            [this](const MediaSample &sample) {
                const std::scoped_lock held(m_mutex);
                m_samples.push_back(sample);
            },
            [](const std::exception_ptr &) { ADD_FAILURE() << "ended"; });
        EXPECT_TRUE(comesTrue([&] { return started.isFinished() && !samples().empty(); }));
    }

    [[nodiscard]] AudioFormat format() const { return samples().front().audioFormat().value(); }
    /// Amplitude of a tone in the latest 0.3 s; 0 as long as less was recorded.
    [[nodiscard]] double level(double frequency) const
    {
        const auto sound = latest();
        const double step = 2 * std::numbers::pi * frequency / format().sampleRate;
        std::complex<double> sum;
        for (std::size_t i = 0; i < sound.size(); ++i) {
            sum += std::polar(static_cast<double>(sound[i]), step * static_cast<double>(i));
        }
        return sound.empty() ? 0 : 2 * std::abs(sum) / static_cast<double>(sound.size());
    }
    [[nodiscard]] bool comesToHear(double frequency) const
    {
        return comesTrue([&] { return level(frequency) > 0.2; });
    }
    [[nodiscard]] bool comesToBeSilent() const
    {
        return comesTrue([&] {
            const auto sound = latest();
            return !sound.empty() && std::ranges::all_of(sound, [](float value) { return value == 0; });
        });
    }
    /// Lets it deliver another stretch of this length, at most ten seconds long.
    void goOn(MediaTime duration) const
    {
        const auto until = samples().back().presentationTime() + duration;
        EXPECT_TRUE(comesTrue([&] { return samples().back().presentationTime() > until; }));
    }
    /// When the latest impulse was heard, in nanoseconds; 0 when none was.
    [[nodiscard]] std::int64_t impulseTime() const
    {
        std::int64_t time = 0;
        for (const auto &sample : samples()) {
            const auto &block = *sample.audioBlock();
            const auto loud = std::ranges::find_if(block.samples, [](float value) { return value > 0.3F; });
            if (loud != block.samples.end()) {
                const auto frame = (loud - block.samples.begin()) / block.format.channels;
                const auto offset = MediaTime::fromFraction(frame, std::lround(block.format.sampleRate));
                time = (sample.presentationTime() + offset).nanoseconds();
            }
        }
        return time;
    }
    /// Stops, and expects every block to follow on the one before to a few milliseconds, in one format.
    void expectUnbroken()
    {
        m_source->stop().waitForFinished();
        const auto all = samples();
        for (std::size_t i = 1; i < all.size(); ++i) {
            const auto end = all[i - 1].presentationTime() + all[i - 1].timing().duration;
            ASSERT_LE(std::abs((all[i].presentationTime() - end).nanoseconds()), 10'000'000) << "block " << i;
            ASSERT_EQ(all[i].audioFormat(), all[0].audioFormat()) << "block " << i;
        }
    }

private:
    [[nodiscard]] std::vector<MediaSample> samples() const
    {
        const std::scoped_lock held(m_mutex);
        return m_samples;
    }
    /// The first channel of the latest 0.3 s, backwards; empty as long as less was recorded.
    [[nodiscard]] std::vector<float> latest() const
    {
        const auto all = samples();
        const auto wanted = static_cast<std::size_t>(0.3 * all.front().audioFormat()->sampleRate);
        std::vector<float> sound;
        for (auto sample = all.rbegin(); sample != all.rend() && sound.size() < wanted; ++sample) {
            const auto &block = *sample->audioBlock();
            for (std::size_t i = block.frameCount(); i > 0; --i) {
                sound.push_back(block.samples[(i - 1) * static_cast<std::size_t>(block.format.channels)]);
            }
        }
        return sound.size() < wanted ? std::vector<float>() : sound;
    }

    mutable std::mutex m_mutex;
    std::vector<MediaSample> m_samples;
    std::unique_ptr<CaptureSource> m_source; ///< last: it stops before the rest goes
};

} // namespace zivra::desktop::test
