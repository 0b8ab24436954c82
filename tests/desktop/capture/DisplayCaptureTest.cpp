#include "desktop/capture/Take.h"
#include "desktop/capture/TestWindow.h"
#include "support/Eventually.h"
#include "support/Shell.h"

#include <QRegion>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <thread>

namespace zivra::desktop {

namespace {

constexpr QRect kBackdrop(0, 0, 800, 600);

bool showsAnywhere(const VideoFrame &frame, std::uint32_t colour)
{
    for (int place = 0; place < frame.width * frame.height; place += 7) {
        if (isNear(colourAt(frame, place % frame.width, place / frame.width), colour)) {
            return true;
        }
    }
    return false;
}

} // namespace

TEST(DisplayCapture, ScalesTheWholeDisplayAndBeginsAtOnce)
{
    const TestWindow backdrop({0, 0, 1920, 1080}, kBlue);
    const TestWindow square({400, 200, 200, 100}, kRed);
    CaptureConfiguration scaled = configuration({0, 0, 960, 540});
    scaled.sourceRect.reset();
    Take take(wholeDisplay(), scaled);
    ASSERT_TRUE(take.waitForFrame());
    const MediaSample first = take.samples().front();
    EXPECT_EQ(first.frameStatus(), FrameStatus::Complete);
    EXPECT_FALSE(first.videoFrame()->changed);
    ASSERT_TRUE(take.waitForFrame()) << "not repeated";
    for (const QPoint inside : {QPoint(202, 102), QPoint(297, 147)}) {
        EXPECT_TRUE(take.shows(inside.x(), inside.y(), kRed));
    }
    for (const QPoint outside : {QPoint(197, 97), QPoint(303, 153), QPoint(959, 539)}) {
        EXPECT_TRUE(take.shows(outside.x(), outside.y(), kBlue));
    }
    EXPECT_TRUE(take.stop());
}

TEST(DisplayCapture, ShowsTheRectangleItIsGivenAndTellsWhatChanged)
{
    const TestWindow backdrop(kBackdrop, kBlue);
    TestWindow corner({101, 51, 20, 20}, kRed);
    // An odd side is filled up rather than the whole picture scaled.
    CaptureConfiguration cropped = configuration({101, 51, 299, 199});
    cropped.outputSize = QSize(300, 200);
    Take take(wholeDisplay(), cropped);
    ASSERT_TRUE(take.waitForColour(18, 18, kRed));
    EXPECT_TRUE(take.shows(0, 0, kRed));
    EXPECT_TRUE(take.shows(22, 22, kBlue));
    EXPECT_TRUE(take.shows(299, 199, kBlue));

    ASSERT_TRUE(take.waitForRepetition());
    corner.paint(kGreen);
    ASSERT_TRUE(take.waitForColour(10, 10, kGreen));
    QRegion changed;
    for (const QRect &each : *take.samples().back().videoFrame()->changed) {
        changed += each;
    }
    EXPECT_TRUE(changed.contains(QRect(0, 0, 20, 20)));
    EXPECT_LE(changed.boundingRect().right(), 40);
    EXPECT_LE(changed.boundingRect().bottom(), 40);
}

TEST(DisplayCapture, NeverShowsAnExcludedWindowButWhatLiesBeneath)
{
    TestWindow backdrop(kBackdrop, kBlue);
    TestWindow beneath({100, 100, 200, 200}, kGreen, TestWindow::Kind::Managed);
    backdrop.lower();
    TestWindow excluded({150, 150, 100, 60}, kRed);
    Take take(wholeDisplay({excluded.id()}), configuration(kBackdrop));
    ASSERT_TRUE(take.waitForColour(200, 180, kGreen));
    for (int step = 0; step < 60; ++step) {
        excluded.move(150 + step * 8, 150 + step * 4);
        if (step % 20 == 10) {
            excluded.setShown(false);
            beneath.paint(kBlue + static_cast<std::uint32_t>(step));
            excluded.setShown(true);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(12));
    }
    // Drawing beneath it is seen, though the screen does not show it.
    excluded.move(150, 150);
    beneath.paint(0xd0d040);
    EXPECT_TRUE(take.waitForColour(200, 180, 0xd0d040));
    // Gone for longer than a compositing manager may show it, the screen itself is read again.
    excluded.setShown(false);
    std::this_thread::sleep_for(std::chrono::milliseconds(700));
    beneath.paint(kGreen);
    EXPECT_TRUE(take.waitForColour(200, 180, kGreen));
    excluded.setShown(true);
    beneath.paint(0xd0d040);
    EXPECT_TRUE(take.waitForColour(200, 180, 0xd0d040));
    EXPECT_TRUE(take.stop());
    for (const MediaSample &sample : take.samples()) {
        EXPECT_FALSE(showsAnywhere(*sample.videoFrame(), kRed));
    }
}

TEST(DisplayCapture, NeverShowsWhatTheExcludedProcessOpensMeanwhile)
{
    TestWindow backdrop(kBackdrop, kBlue);
    TestWindow hidden({420, 120, 60, 40}, kRed);
    hidden.setShown(false);
    ContentFilter filter = wholeDisplay();
    filter.excludedProcessID = getpid();
    filter.keptWindowIDs = {backdrop.id()};
    Take take(filter, configuration(kBackdrop));
    ASSERT_TRUE(take.waitForColour(200, 180, kBlue));
    const TestWindow dialog({150, 150, 100, 60}, kRed, TestWindow::Kind::Managed);
    const TestWindow tooltip({300, 150, 80, 30}, kRed);
    hidden.setShown(true);
    backdrop.setShown(false);
    backdrop.setShown(true);
    backdrop.paint(kGreen);
    EXPECT_TRUE(take.waitForColour(200, 180, kGreen)) << "what is kept is seen, also when it comes back";
    EXPECT_TRUE(take.stop());
    for (const MediaSample &sample : take.samples()) {
        EXPECT_FALSE(showsAnywhere(*sample.videoFrame(), kRed));
    }
}

TEST(DisplayCapture, FillsWithBlackWhatTheScreenDoesNotHave)
{
    const TestWindow corner({1820, 1000, 100, 80}, kGreen);
    Take take(wholeDisplay(), configuration({1840, 1020, 120, 100}));
    ASSERT_TRUE(take.waitForColour(78, 58, kGreen));
    EXPECT_TRUE(take.shows(0, 0, kGreen));
    EXPECT_TRUE(take.shows(81, 10, kBlack));
    EXPECT_TRUE(take.shows(10, 61, kBlack));
}

TEST(DisplayCapture, EndsInWordsWhenTheServerGoes)
{
    const QTemporaryDir folder;
    QFile number(folder.filePath("display"));
    const QByteArray server =
        shell("Xvfb -displayfd 3 -screen 0 640x480x24 -nolisten tcp -noreset >/dev/null 2>&1 3>" +
              number.fileName() + " & echo $!");
    ASSERT_TRUE(eventually([&] { return number.size() > 1; }) && number.open(QIODevice::ReadOnly));
    const QByteArray name = ":" + number.readLine().trimmed();
    ContentFilter filter;
    filter.displayID = firstDisplay(name);
    Take take(filter, configuration({0, 0, 640, 480}), name);
    ASSERT_TRUE(take.waitForFrame());
    shell("kill -9 " + server);
    EXPECT_EQ(take.waitForEnd(), "The connection to the X server was lost.");
    EXPECT_TRUE(take.stop());

    EXPECT_NE(Take(filter, configuration({0, 0, 640, 480}), name).startError(), QString());
    filter.displayID = 0xdead;
    EXPECT_EQ(Take(filter, configuration({0, 0, 64, 64})).startError(),
              "The display to be recorded is not connected.");
}

} // namespace zivra::desktop
