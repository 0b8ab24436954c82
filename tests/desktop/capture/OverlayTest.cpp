#include "desktop/capture/Take.h"
#include "desktop/capture/TestWindow.h"
#include "support/Shell.h"

#include <gtest/gtest.h>

namespace zivra::desktop {

namespace {

/// Pixels within a distance of a place that differ from the backdrop.
int marks(const VideoFrame &frame, int x, int y, int from, int to)
{
    int count = 0;
    for (int dy = -to; dy <= to; ++dy) {
        for (int dx = -to; dx <= to; ++dx) {
            const int square = dx * dx + dy * dy;
            if (square >= from * from && square <= to * to) {
                count += isNear(colourAt(frame, x + dx, y + dy), kBlue) ? 0 : 1;
            }
        }
    }
    return count;
}

} // namespace

TEST(Overlays, ShowTheCursorOnlyWhenAskedAndWhereItIs)
{
    const TestWindow backdrop({0, 0, 800, 600}, kBlue);
    shell("xdotool mousemove 200 150");
    CaptureConfiguration with = configuration({100, 100, 400, 300});
    CaptureConfiguration without = with;
    with.showsCursor = true;
    Take shown(wholeDisplay(), with);
    Take hidden(wholeDisplay(), without);
    const auto isAt = [](int x, int y) {
        return [=](const VideoFrame &frame) { return marks(frame, x, y, 0, 20) > 10; };
    };
    ASSERT_TRUE(shown.waitFor(isAt(100, 50)));
    shell("xdotool mousemove_relative 150 100"); // as a mouse does, unlike a jump
    ASSERT_TRUE(shown.waitFor(isAt(250, 150), std::chrono::milliseconds(900))) << "not before the repetition";
    EXPECT_FALSE(isAt(100, 50)(*shown.samples().back().videoFrame())) << "left a trace";
    ASSERT_TRUE(hidden.waitFor([](const VideoFrame &frame) { return frame.changed.has_value(); }));
    EXPECT_FALSE(isAt(250, 150)(*hidden.samples().back().videoFrame()));
}

TEST(Overlays, ShowARingAroundAPressThatVanishes)
{
    const TestWindow backdrop({0, 0, 800, 600}, kBlue);
    shell("xdotool mousemove 300 250");
    CaptureConfiguration clicks = configuration({100, 100, 400, 300});
    clicks.showsMouseClicks = true;
    Take take(wholeDisplay(), clicks);
    ASSERT_TRUE(take.waitForFrame());
    shell("xdotool click 1");
    ASSERT_TRUE(take.waitFor([](const VideoFrame &frame) { return marks(frame, 200, 150, 19, 21) > 60; }));
    const auto ring = take.samples().back().videoFrame();
    EXPECT_EQ(marks(*ring, 200, 150, 0, 14), 0);
    EXPECT_EQ(marks(*ring, 200, 150, 26, 40), 0);
    EXPECT_TRUE(take.waitFor([](const VideoFrame &frame) { return marks(frame, 200, 150, 0, 40) == 0; }));
    const auto count = take.samples().size();
    EXPECT_GE(count, 5U) << "the ring fades";
    shell("xdotool click 4");
    EXPECT_FALSE(take.waitFor([](const VideoFrame &frame) { return marks(frame, 200, 150, 0, 40) > 0; },
                              std::chrono::milliseconds(300)))
        << "the wheel is no press";
}

} // namespace zivra::desktop
