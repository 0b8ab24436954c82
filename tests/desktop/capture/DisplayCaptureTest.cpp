#include "desktop/capture/Take.h"
#include "desktop/capture/TestWindow.h"

#include <QFile>
#include <QProcess>
#include <QRegion>

#include <gtest/gtest.h>

#include <atomic>

namespace zivra::desktop {

namespace {

constexpr std::uint32_t kBlue = 0x2040c0;
constexpr std::uint32_t kGreen = 0x30b050;
constexpr std::uint32_t kRed = 0xc03020;
constexpr std::uint32_t kBlack = 0;
constexpr QRect kBackdrop(0, 0, 800, 600);

/// An X server of its own, to be ended by the test.
class OwnServer {
public:
    OwnServer()
    {
        m_process.start("Xvfb",
                        {"-displayfd", "1", "-screen", "0", "640x480x24", "-nolisten", "tcp", "-noreset"});
        while (!m_process.canReadLine() && m_process.waitForReadyRead()) {
        }
        m_name = ":" + m_process.readLine().trimmed();
    }
    ~OwnServer() { kill(); }
    OwnServer(const OwnServer &) = delete;
    OwnServer &operator=(const OwnServer &) = delete;

    [[nodiscard]] QByteArray name() const { return m_name; }
    void kill()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

private:
    QProcess m_process;
    QByteArray m_name;
};

} // namespace

TEST(DisplayCapture, ScalesTheWholeDisplayAndBeginsAtOnce)
{
    const TestWindow backdrop({0, 0, 1920, 1080}, kBlue);
    const TestWindow square({400, 200, 200, 100}, kRed);
    CaptureConfiguration scaled = configuration({0, 0, 960, 540});
    scaled.sourceRect.reset();
    Take take(wholeDisplay(), scaled);
    ASSERT_TRUE(take.waitFor([](const VideoFrame &) { return true; }));
    const MediaSample first = take.samples().front();
    EXPECT_EQ(first.frameStatus(), FrameStatus::Complete);
    EXPECT_FALSE(first.videoFrame()->changed);
    ASSERT_TRUE(take.waitFor([](const VideoFrame &) { return true; })) << "not repeated";
    const auto frame = take.samples().back().videoFrame();
    for (const QPoint inside : {QPoint(202, 102), QPoint(297, 147)}) {
        EXPECT_TRUE(isNear(colourAt(*frame, inside.x(), inside.y()), kRed));
    }
    for (const QPoint outside : {QPoint(197, 97), QPoint(303, 153), QPoint(959, 539)}) {
        EXPECT_TRUE(isNear(colourAt(*frame, outside.x(), outside.y()), kBlue));
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
    const auto frame = take.samples().back().videoFrame();
    EXPECT_TRUE(isNear(colourAt(*frame, 0, 0), kRed));
    EXPECT_TRUE(isNear(colourAt(*frame, 22, 22), kBlue));
    EXPECT_TRUE(isNear(colourAt(*frame, 299, 199), kBlue));

    ASSERT_TRUE(
        take.waitFor([](const VideoFrame &still) { return still.changed && still.changed->empty(); }));
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
    std::atomic<int> leaks = 0;
    take.setObserver([&leaks](const VideoFrame &frame) {
        for (int y = 0; y < frame.height; y += 8) {
            for (int x = 0; x < frame.width; x += 8) {
                leaks += isNear(colourAt(frame, x, y), kRed) ? 1 : 0;
            }
        }
        return false;
    });
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
    excluded.move(160, 160);
    beneath.paint(0xd0d040);
    EXPECT_TRUE(take.waitForColour(200, 180, 0xd0d040));
    EXPECT_TRUE(take.stop());
    EXPECT_EQ(leaks, 0);
}

TEST(DisplayCapture, FillsWithBlackWhatTheScreenDoesNotHave)
{
    const TestWindow corner({1820, 1000, 100, 80}, kGreen);
    Take take(wholeDisplay(), configuration({1840, 1020, 120, 100}));
    ASSERT_TRUE(take.waitForColour(78, 58, kGreen));
    const auto frame = take.samples().back().videoFrame();
    EXPECT_TRUE(isNear(colourAt(*frame, 0, 0), kGreen));
    EXPECT_TRUE(isNear(colourAt(*frame, 81, 10), kBlack));
    EXPECT_TRUE(isNear(colourAt(*frame, 10, 61), kBlack));
}

TEST(DisplayCapture, EndsInWordsWhenTheServerGoes)
{
    OwnServer server;
    ContentFilter filter;
    filter.displayID = firstDisplay(server.name());
    Take take(filter, configuration({0, 0, 640, 480}), server.name());
    ASSERT_TRUE(take.waitFor([](const VideoFrame &) { return true; }));
    server.kill();
    EXPECT_EQ(take.waitForEnd(), "The connection to the X server was lost.");
    EXPECT_TRUE(take.stop());

    EXPECT_NE(Take(filter, configuration({0, 0, 640, 480}), server.name()).startError(), QString());
    filter.displayID = 0xdead;
    EXPECT_EQ(Take(filter, configuration({0, 0, 64, 64})).startError(),
              "The display to be recorded is not connected.");
}

} // namespace zivra::desktop
