#include "desktop/capture/Take.h"
#include "desktop/capture/TestWindow.h"
#include "desktop/x11/capture/FramePacer.h"

#include <gtest/gtest.h>

#include <set>
#include <thread>
#include <utility>

namespace zivra::desktop {

namespace {

using namespace std::chrono_literals;

constexpr QRect kArea(0, 0, 320, 200);

/// The n-th of a series of colours that frames tell apart.
std::uint32_t shade(int number)
{
    return 0x010101U * static_cast<std::uint32_t>(20 + 2 * number % 220);
}

struct Result {
    std::size_t painted = 0; ///< colours that stayed for about a frame's time, however busy the machine is
    std::size_t seen = 0;    ///< colours that frames show
};

/// Paints a window at a steady rate and records it at 30 frames a second.
Result record(int paintsPerSecond, int paints)
{
    Result result;
    TestWindow scene(kArea, shade(0));
    Take take(wholeDisplay(), configuration(kArea, 30));
    const auto begin = std::chrono::steady_clock::now();
    auto before = begin;
    for (int paint = 1; paint <= paints; ++paint) {
        std::this_thread::sleep_until(begin + paint * 1'000'000us / paintsPerSecond);
        scene.paint(shade(paint));
        const auto now = std::chrono::steady_clock::now();
        result.painted += now - std::exchange(before, now) > 30ms ? 1 : 0;
    }
    std::this_thread::sleep_for(100ms);
    take.stop();
    std::set<int> seen;
    for (const MediaSample &sample : take.samples()) {
        seen.insert(sample.videoFrame()->planes[0].data[0]);
    }
    result.seen = seen.size();
    return result;
}

} // namespace

TEST(Pacing, LosesNoPictureOfASceneAsFastAsItself)
{
    const Result same = record(30, 60);
    EXPECT_GE(same.seen, same.painted * 9 / 10);
    const Result twice = record(60, 120);
    EXPECT_GE(twice.seen, 45U);
    EXPECT_LE(twice.seen, 66U);
}

TEST(Pacing, ForgivesLatenessButKeepsTheRate)
{
    const MediaTime interval = MediaTime::fromMilliseconds(40);
    FramePacer pacer(interval);
    MediaTime now = MediaTime::fromMilliseconds(1000);
    pacer.frameTaken(now);
    const MediaTime first = pacer.due();
    for (int frame = 0; frame < 100; ++frame) {
        now = pacer.due() + MediaTime::fromMilliseconds(frame % 5);
        pacer.frameTaken(now);
    }
    EXPECT_EQ(pacer.due() - first, MediaTime::fromMilliseconds(100 * 40));
}

TEST(Pacing, RepeatsAStillPictureOnceASecondAndOnceMoreAtTheEnd)
{
    const TestWindow scene(kArea, shade(7));
    Take take(wholeDisplay(), configuration(kArea));
    std::this_thread::sleep_for(2400ms);
    EXPECT_TRUE(take.stop());
    const auto samples = take.samples();
    ASSERT_GE(samples.size(), 4U);
    ASSERT_LE(samples.size(), 6U) << "the window may have been painted after the first";
    for (std::size_t index = 1; index < samples.size(); ++index) {
        EXPECT_EQ(samples[index].frameStatus(), FrameStatus::Complete);
        EXPECT_GT(samples[index].presentationTime(), samples[index - 1].presentationTime());
        EXPECT_LT((samples[index].presentationTime() - samples[index - 1].presentationTime()).seconds(), 1.5);
    }
    EXPECT_TRUE(samples.back().videoFrame()->changed->empty());
}

TEST(Pacing, DropsFramesThatHaveNoBufferAndShowsTheirChangesLater)
{
    TestWindow scene(kArea, shade(0));
    CaptureConfiguration shallow = configuration(kArea);
    shallow.queueDepth = 3;
    Take take(wholeDisplay(), shallow, {}, Take::Frames::Held);
    for (int paint = 1; paint <= 10; ++paint) {
        scene.paint(shade(paint * 5));
        std::this_thread::sleep_for(50ms);
    }
    EXPECT_EQ(take.samples().size(), 3U);
    take.forgetFrames();
    EXPECT_TRUE(take.waitForColour(kArea.right(), kArea.bottom(), shade(50)));
}

} // namespace zivra::desktop
