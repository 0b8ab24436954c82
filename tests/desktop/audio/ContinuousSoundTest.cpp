#include "desktop/audio/ContinuousSound.h"

#include "desktop/audio/SoundClock.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

namespace zivra::desktop::test {

namespace {

constexpr int kRate = 48000;
constexpr std::int64_t kBlock = 480; // 10 ms
constexpr auto ms = &MediaTime::fromMilliseconds;

TEST(SoundClock, SettlesOnTheMedianAndMovesOnlyForLargeErrors)
{
    SoundClock clock(kRate);
    int number = 0;
    // Feeds two seconds of blocks with this error to it; the error of the last stamp.
    const auto errorAfter = [&](const std::function<MediaTime(int)> &error) {
        MediaTime stamp;
        for (const int end = number + 200; number < end; ++number) {
            stamp = clock.advance(ms(10LL * number) + error(number), kBlock);
        }
        return stamp - ms(10LL * (number - 1));
    };
    EXPECT_EQ(errorAfter([](int i) { return i == 0 ? ms(30) : ms(i % 3 - 1); }), ms(0));
    EXPECT_EQ(errorAfter([](int) { return ms(35); }), ms(0));
    EXPECT_EQ(errorAfter([](int) { return ms(50); }), ms(50));
}

TEST(ContinuousSound, BridgesBreaksAndLeavesOutOverlaps)
{
    std::vector<MediaSample> blocks;
    ContinuousSound sound({.sampleRate = kRate, .channels = 2}, [&](MediaSample s) { blocks.push_back(s); });
    const std::vector<float> loud(kRate * 2, 1.0F);
    sound.deliver(ms(1000), loud.data(), 3 * kBlock);
    sound.deliver(ms(1080), loud.data(), kBlock);     // 50 ms late
    sound.deliver(ms(1060), loud.data(), 4 * kBlock); // 30 ms of it again
    sound.deliver(ms(500), loud.data(), kBlock);      // long past
    sound.fill(ms(1155));

    EXPECT_EQ(sound.end(), ms(1140));
    std::vector<float> all;
    for (const auto &block : blocks) {
        EXPECT_EQ(block.presentationTime(),
                  ms(1000 + static_cast<std::int64_t>(all.size()) * 1000 / (2 * kRate)));
        EXPECT_LE(block.timing().duration, ms(20));
        all.insert(all.end(), block.audioBlock()->samples.begin(), block.audioBlock()->samples.end());
    }
    const auto silent = [&](std::int64_t at) { return all.at(static_cast<std::size_t>(at) * 96) == 0; };
    EXPECT_EQ(all.size(), 140U * 96);
    EXPECT_TRUE(!silent(29) && silent(31) && silent(79) && !silent(81) && !silent(99) && silent(101));
}

} // namespace

} // namespace zivra::desktop::test
