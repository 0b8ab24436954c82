#include "app/CapturePlan.h"

#include "capture/ZivraError.h"

#include <gtest/gtest.h>

#include <tuple>

namespace zivra {

namespace {

ShareableContent desktopOfTwo()
{
    ShareableContent content;
    content.displays = {{1, QRectF(0, 0, 1000, 800)}, {2, QRectF(1000, 0, 500, 400)}};
    content.windows = {
        {10, QRectF(900, 100, 300, 200), "straddles", 0, true, WindowOwner{100, "editor"}},
        {11, QRectF(-50, -50, 200, 200), "spills over", 0, true, WindowOwner{7, "zivra"}},
        {12, QRectF(0, 0, 10, 10), "nobody's", 0, true, std::nullopt},
        {13, QRectF(5000, 5000, 10, 10), "off screen", 0, true, WindowOwner{7, "zivra"}},
    };
    return content;
}

ZivraError::Case failureOf(const ShareableContent &content, std::uint32_t windowID)
{
    try {
        std::ignore = planForWindow(content, windowID);
        ADD_FAILURE() << "a plan for window " << windowID;
    } catch (const ZivraError &error) {
        return error.code();
    }
    return ZivraError::cancelled;
}

} // namespace

TEST(OutputSize, CapsTheHeightAndRoundsToEvenSides)
{
    EXPECT_EQ(outputSize({1512, 982}, 2, 1080), QSize(1662, 1080));
    EXPECT_EQ(outputSize({101, 75}, 1, 1080), QSize(102, 76));
    EXPECT_EQ(outputSize({1920, 1080}, 1, 480), QSize(854, 480));
    EXPECT_EQ(outputSize({3000, 200}, 1, 720), QSize(3000, 200)) << "the width has no limit";
    EXPECT_EQ(outputSize({0.4, 0.4}, 1, 1080), QSize(2, 2));
}

TEST(WindowPlan, BelongsToTheDisplayUnderItsMiddleAndIsCutOffThere)
{
    const ShareableContent content = desktopOfTwo();
    EXPECT_EQ(planForWindow(content, 10),
              (CapturePlan{2, CaptureArea::Window, QRectF(0, 100, 200, 200), 10}));
    EXPECT_EQ(planForWindow(content, 11), (CapturePlan{1, CaptureArea::Window, QRectF(0, 0, 150, 150), 11}));
    EXPECT_EQ(failureOf(content, 99), ZivraError::noWindow);
    EXPECT_EQ(failureOf(content, 13), ZivraError::noWindow) << "nothing of it is on a display";
    EXPECT_EQ(failureOf({{}, content.windows}, 10), ZivraError::noDisplay);
}

TEST(ContentFilterOfATake, KeepsOverlaysInAndOurOtherWindowsOut)
{
    const ShareableContent content = desktopOfTwo();
    const auto filterFor = [&](const CapturePlan &plan) { return contentFilter(plan, content, {11}, 7); };
    const CapturePlan screen{1, CaptureArea::FullScreen, {}, {}};
    EXPECT_EQ(filterFor(screen),
              (ContentFilter{ContentFilter::Kind::DisplayExcludingWindows, 1, {13}, 7, {11}}));
    CapturePlan window{2, CaptureArea::Window, QRectF(0, 100, 200, 200), 10};
    EXPECT_EQ(filterFor(window), (ContentFilter{ContentFilter::Kind::DisplayIncludingWindows, 2, {10, 11}}));
    window.windowID = 99; // has closed since: only the overlays are left, which is no failure
    EXPECT_EQ(filterFor(window), (ContentFilter{ContentFilter::Kind::DisplayIncludingWindows, 2, {11}}));
}

} // namespace zivra
