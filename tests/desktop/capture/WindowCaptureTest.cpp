#include "desktop/capture/Take.h"
#include "desktop/capture/TestWindow.h"
#include "support/Shell.h"

#include <gtest/gtest.h>

#include <thread>

namespace zivra::desktop {

namespace {

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
    EXPECT_TRUE(take.shows(marked.x(), marked.y(), kRed));
    EXPECT_TRUE(take.shows(4, 4, kBlack));
    EXPECT_FALSE(take.shows(outline.width() / 2 + 20, 23, kBlack)) << "no frame";

    // It stays at its place in the picture; the overlay stays at its own on the screen.
    recorded.move(140, 130);
    settle();
    const QPoint moved = recorded.outline().topLeft() - corner;
    ASSERT_NE(moved, QPoint());
    const QPoint marks = marked - moved;
    ASSERT_TRUE(take.waitForColour(marks.x(), marks.y(), kRed));
    EXPECT_TRUE(take.shows(inside.x(), inside.y(), kGreen));
    EXPECT_TRUE(take.shows(4, 4, kBlack));

    // Minimised it holds its picture.
    shell(QString("xdotool windowminimize %1").arg(recorded.id()));
    settle();
    ASSERT_TRUE(take.waitForRepetition());
    EXPECT_TRUE(take.shows(inside.x(), inside.y(), kGreen));
    EXPECT_TRUE(take.shows(marks.x(), marks.y(), kRed));
    overlay.setShown(false);
    recorded.setShown(true);
    ASSERT_TRUE(take.waitForColour(marks.x(), marks.y(), kGreen));

    // Black when it is closed, an end when all are.
    recorded.close();
    EXPECT_TRUE(take.waitForColour(inside.x(), inside.y(), kBlack));
    overlay.close();
    EXPECT_EQ(take.waitForEnd(), "The window being recorded was closed.");
    EXPECT_TRUE(take.stop());
}

} // namespace zivra::desktop
