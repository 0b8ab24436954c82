#include "desktop/capture/Take.h"
#include "desktop/capture/TestWindow.h"

#include <gtest/gtest.h>

#include <thread>

namespace zivra::desktop {

namespace {

constexpr std::uint32_t kBlue = 0x2040c0;
constexpr std::uint32_t kGreen = 0x30b050;
constexpr std::uint32_t kRed = 0xc03020;
constexpr std::uint32_t kBlack = 0;

/// Lets the window manager do what it was asked for.
void settle()
{
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
}

} // namespace

TEST(WindowCapture, ShowsItsWindowsWholeAndFollowsTheMainOne)
{
    const TestWindow backdrop({0, 0, 800, 600}, kBlue);
    TestWindow recorded({100, 100, 300, 200}, kGreen, TestWindow::Kind::Managed);
    settle();
    TestWindow covering({120, 120, 200, 150}, kBlue, TestWindow::Kind::Overlay);
    TestWindow overlay({300, 200, 40, 40}, kRed);
    const QRect outline = recorded.outline();
    ASSERT_GE(outline.height(), 200);
    const QPoint corner = outline.topLeft();
    const ContentFilter filter{
        ContentFilter::Kind::DisplayIncludingWindows, firstDisplay(), {overlay.id(), recorded.id()}};
    const QRect area = outline.adjusted(-20, -20, 20, 20);
    CaptureConfiguration around = configuration(area);
    around.outputSize = QSize((area.width() + 1) & ~1, (area.height() + 1) & ~1);
    Take take(filter, around);

    const QPoint inside = QPoint(150, 180) - area.topLeft();
    const QPoint marked = QPoint(320, 220) - area.topLeft();
    ASSERT_TRUE(take.waitForColour(inside.x(), inside.y(), kGreen));
    auto frame = take.samples().back().videoFrame();
    EXPECT_TRUE(isNear(colourAt(*frame, marked.x(), marked.y()), kRed));
    EXPECT_TRUE(isNear(colourAt(*frame, 4, 4), kBlack));
    EXPECT_FALSE(isNear(colourAt(*frame, outline.width() / 2 + 20, 23), kBlack)) << "no frame";

    // It stays at its place in the picture; the overlay stays at its own on the screen.
    recorded.move(140, 130);
    settle();
    const QPoint moved = recorded.outline().topLeft() - corner;
    ASSERT_NE(moved, QPoint());
    const QPoint marks = marked - moved;
    ASSERT_TRUE(take.waitForColour(marks.x(), marks.y(), kRed));
    frame = take.samples().back().videoFrame();
    EXPECT_TRUE(isNear(colourAt(*frame, inside.x(), inside.y()), kGreen));
    EXPECT_TRUE(isNear(colourAt(*frame, 4, 4), kBlack));

    // Minimised it holds its picture.
    recorded.minimise();
    settle();
    ASSERT_TRUE(
        take.waitFor([](const VideoFrame &still) { return still.changed && still.changed->empty(); }));
    EXPECT_TRUE(isNear(colourAt(*take.samples().back().videoFrame(), inside.x(), inside.y()), kGreen));
    EXPECT_TRUE(isNear(colourAt(*take.samples().back().videoFrame(), marks.x(), marks.y()), kRed));
    overlay.setShown(false);
    recorded.setShown(true);
    ASSERT_TRUE(take.waitForColour(marks.x(), marks.y(), kGreen));

    // Black when it is closed, an end when all are.
    recorded.close();
    EXPECT_TRUE(take.waitForColour(inside.x(), inside.y(), kBlack));
    EXPECT_TRUE(take.stop());
}

TEST(WindowCapture, EndsInWordsWhenTheWindowIsClosed)
{
    TestWindow recorded({100, 100, 300, 200}, kGreen, TestWindow::Kind::Managed);
    settle();
    Take take({ContentFilter::Kind::DisplayIncludingWindows, firstDisplay(), {recorded.id()}},
              configuration({100, 100, 300, 200}));
    ASSERT_TRUE(take.waitForColour(50, 100, kGreen));
    recorded.close();
    EXPECT_EQ(take.waitForEnd(), "The window being recorded was closed.");
    EXPECT_TRUE(take.stop());
}

} // namespace zivra::desktop
