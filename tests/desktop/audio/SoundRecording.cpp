#include "desktop/audio/SoundRecording.h"

#include <QCoreApplication>
#include <QFuture>
#include <QThread>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <complex>
#include <numbers>

namespace zivra::desktop::test {

bool comesTrue(const std::function<bool()> &condition)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        QCoreApplication::processEvents();
        QThread::msleep(10);
    }
    return true;
}

SoundRecording::SoundRecording(std::unique_ptr<CaptureSource> source) : m_source(std::move(source))
{
    const auto started = m_source->start(
        [this](const MediaSample &sample) {
            const std::scoped_lock held(m_mutex);
            m_samples.push_back(sample);
        },
        [](const std::exception_ptr &) { ADD_FAILURE() << "ended"; });
    EXPECT_TRUE(comesTrue([&] { return started.isFinished() && !samples().empty(); }));
}

std::vector<MediaSample> SoundRecording::samples() const
{
    const std::scoped_lock held(m_mutex);
    return m_samples;
}

std::vector<float> SoundRecording::latest() const
{
    const auto all = samples();
    const auto wanted = static_cast<std::size_t>(0.3 * all.front().audioFormat()->sampleRate);
    std::vector<float> sound;
    for (auto sample = all.rbegin(); sample != all.rend() && sound.size() < wanted; ++sample) {
        const auto block = sample->audioBlock();
        for (std::size_t i = block->frameCount(); i > 0; --i) {
            sound.push_back(block->samples[(i - 1) * static_cast<std::size_t>(block->format.channels)]);
        }
    }
    return sound.size() < wanted ? std::vector<float>() : sound;
}

double SoundRecording::level(double frequency) const
{
    const auto sound = latest();
    const double step = 2 * std::numbers::pi * frequency / format().sampleRate;
    std::complex<double> sum;
    for (std::size_t i = 0; i < sound.size(); ++i) {
        sum += std::polar(static_cast<double>(sound[i]), step * static_cast<double>(i));
    }
    return sound.empty() ? 0 : 2 * std::abs(sum) / static_cast<double>(sound.size());
}

bool SoundRecording::comesToHear(double frequency) const
{
    return comesTrue([&] { return level(frequency) > 0.2; });
}

bool SoundRecording::comesToBeSilent() const
{
    return comesTrue([&] {
        const auto sound = latest();
        return !sound.empty() && std::all_of(sound.begin(), sound.end(), [](float s) { return s == 0; });
    });
}

void SoundRecording::goOn(MediaTime duration) const
{
    const auto until = samples().back().presentationTime() + duration;
    EXPECT_TRUE(comesTrue([&] { return samples().back().presentationTime() > until; }));
}

std::int64_t SoundRecording::impulseTime() const
{
    std::int64_t time = 0;
    for (const auto &sample : samples()) {
        const auto block = sample.audioBlock();
        const auto loud = std::find_if(block->samples.begin(), block->samples.end(),
                                       [](float value) { return std::abs(value) > 0.3F; });
        if (loud != block->samples.end()) {
            const auto frame = (loud - block->samples.begin()) / block->format.channels;
            const auto offset = MediaTime::fromFraction(frame, std::lround(block->format.sampleRate));
            time = (sample.presentationTime() + offset).nanoseconds();
        }
    }
    return time;
}

void SoundRecording::expectUnbroken()
{
    m_source->stop().waitForFinished();
    const auto all = samples();
    for (std::size_t i = 1; i < all.size(); ++i) {
        const auto end = all[i - 1].presentationTime() + all[i - 1].timing().duration;
        ASSERT_LE(std::abs((all[i].presentationTime() - end).nanoseconds()), 10'000'000) << "block " << i;
        ASSERT_EQ(all[i].audioFormat(), all[0].audioFormat()) << "block " << i;
    }
    EXPECT_EQ(samples().size(), all.size());
}

} // namespace zivra::desktop::test
