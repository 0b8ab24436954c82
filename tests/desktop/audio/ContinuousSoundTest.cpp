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

/// The stamp of the last of `count` blocks of 10 ms, measured with this error; the largest break on the way.
struct Run {
    MediaTime last;
    std::int64_t largestBreak = 0;
};
Run run(SoundClock &clock, int first, int count, const std::function<MediaTime(int)> &error)
{
    Run result;
    for (int i = first; i < first + count; ++i) {
        const auto stamp = clock.advance(ms(10LL * i) + error(i), kBlock);
        if (result.last.isValid()) {
            result.largestBreak =
                std::max(result.largestBreak, std::abs((stamp - result.last - ms(10)).nanoseconds()));
        }
        result.last = stamp;
    }
    return result;
}

TEST(SoundClock, SettlesOnTheMedianAndMovesOnlyForLargeErrors)
{
    SoundClock clock(kRate);
    const auto wavering = [](int i) { return i == 0 ? ms(30) : ms(i % 3 - 1); };
    const auto start = run(clock, 0, 200, wavering);
    EXPECT_EQ(start.last, ms(1990));
    EXPECT_LE(start.largestBreak, 2'000'000);

    const auto off = run(clock, 200, 200, [](int) { return ms(35); });
    EXPECT_EQ(off.last, ms(3990));
    EXPECT_EQ(off.largestBreak, 0);
    EXPECT_EQ(run(clock, 400, 200, [](int) { return ms(50); }).last, ms(5990 + 50));
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
