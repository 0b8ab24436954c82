#include "capture/RecorderFixture.h"

namespace zivra::test {

namespace {

struct ScreenTimelineTest : RecorderTest {
    ScreenTimelineTest() { start(); }
};

} // namespace

TEST_F(ScreenTimelineTest, BeginsWithTheFirstCompleteFrame)
{
    sound(90);
    frame(95, FrameStatus::Idle);
    deliver(CaptureOutput::Screen, {std::make_shared<const VideoFrame>(), at(96)});
    EXPECT_TRUE(movies.writers.empty());
    frame(100);
    sound(99);
    sound(101, CaptureOutput::Microphone);
    frame(110, FrameStatus::Idle);
    deliver(CaptureOutput::Screen, {});
    frame(133);
    EXPECT_EQ(writer().sessionStart, MediaTime::fromMilliseconds(100));
    EXPECT_EQ(times(video()), Times({100, 133}));
    EXPECT_EQ(times(systemSound()), Times({99}));
    EXPECT_EQ(times(microphone()), Times({101}));
}

TEST_F(ScreenTimelineTest, LeavesNoGapForAPause)
{
    frame(100'000);
    sound(104'480);
    pause();
    sound(104'500);
    frame(106'000);
    sound(109'000);
    resume();
    sound(109'020);
    frame(109'030);
    EXPECT_EQ(times(systemSound()), Times({104'480, 104'480}));
    EXPECT_EQ(times(video()), Times({100'000, 104'490}));
    EXPECT_EQ(video().appended.back().timing().duration, MediaTime::fromMilliseconds(10));
    EXPECT_FALSE(video().appended.back().timing().decode.isValid());
}

TEST_F(ScreenTimelineTest, AddsUpPauses)
{
    frame(0);
    sound(40);
    pause();
    resume();
    sound(1040); // nothing came in between: the gap is closed once
    sound(1050);
    pause();
    frame(1500);
    resume();
    resume();
    frame(2050); // lies at 50 now, above the last frame
    frame(2083);
    sound(2090);
    EXPECT_EQ(times(systemSound()), Times({40, 40, 50, 90}));
    EXPECT_EQ(times(video()), Times({0, 50, 83}));
}

TEST_F(ScreenTimelineTest, DropsTheFrameThatWouldRepeatATime)
{
    frame(100);
    pause();
    resume();
    frame(300);
    frame(333);
    EXPECT_EQ(times(video()), Times({100, 133}));
}

TEST_F(ScreenTimelineTest, TakesLateAndReorderedSamplesByTheHighestTime)
{
    frame(100);
    sound(150);
    sound(120); // late: does not lower the highest time
    pause();
    resume();
    sound(145); // below the highest time: the offset shrinks below zero
    frame(160);
    frame(155); // out of order: only pictures are held to their order
    EXPECT_EQ(times(systemSound()), Times({150, 120, 150}));
    EXPECT_EQ(times(video()), Times({100, 165}));
}

TEST_F(ScreenTimelineTest, CountsTheTimeOfADroppedSample)
{
    frame(100);
    systemSound().readyFor = 0;
    sound(200);
    pause();
    resume();
    systemSound().readyFor = 1;
    sound(500);
    EXPECT_EQ(times(systemSound()), Times({200}));
}

TEST_F(ScreenTimelineTest, KeepsAPauseBeforeTheFirstSampleAsAGap)
{
    pause();
    frame(100); // opens the file all the same
    EXPECT_EQ(writer().sessionStart, MediaTime::fromMilliseconds(100));
    resume();
    frame(400);
    EXPECT_EQ(times(video()), Times({400}));
}

TEST_F(ScreenTimelineTest, PausesInOrderWithTheSamplesAroundIt)
{
    frame(0);
    streams.deliver(CaptureOutput::Audio, {std::make_shared<const AudioBlock>(), at(10)});
    recorder->pause();
    streams.deliver(CaptureOutput::Audio, {std::make_shared<const AudioBlock>(), at(20)});
    recorder->resume();
    streams.deliver(CaptureOutput::Audio, {std::make_shared<const AudioBlock>(), at(30)});
    queues.run();
    EXPECT_EQ(times(systemSound()), Times({10, 10}));
}

} // namespace zivra::test
