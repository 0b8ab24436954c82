#include "capture/RecorderFixture.h"

#include <map>

namespace zivra::test {

namespace {

struct TimelineCase {
    const char *what;
    /// Steps with their times: (f)rame, (i)dle frame, frame without a status (n), (s)ound, (d)ropped sound,
    /// (m)icrophone, (p)ause, (r)esumption.
    const char *script;
    Times video;
    Times systemSound;
    Times microphone;
};

struct ScreenTimelineTest : RecorderTest, testing::WithParamInterface<TimelineCase> {
    void play(const QString &script)
    {
        const std::map<QChar, std::function<void(std::int64_t)>> steps{
            {'f', [this](auto time) { frame(time); }},
            {'i', [this](auto time) { frame(time, FrameStatus::Idle); }},
            {'n', [this](auto time) { frame(time, std::nullopt); }},
            {'s', [this](auto time) { sound(time); }},
            {'m', [this](auto time) { sound(time, CaptureOutput::Microphone); }},
            {'d', [this](auto time) { drop(time); }},
            {'p', [this](auto) { recorder->pause(); }},
            {'r', [this](auto) { recorder->resume(); }}};
        for (const QString &step : script.split(' ')) {
            steps.at(step.front())(step.mid(1).toLongLong());
        }
        queues.run();
    }
    void drop(std::int64_t time)
    {
        queues.run();
        systemSound().readyFor = 0;
        sound(time);
        queues.run();
        systemSound().readyFor = 100;
    }
};

const std::vector<TimelineCase> kCases{
    {"begins with the first complete frame", "s90 i95 n96 f100 s99 m101 i110 f133", {100, 133}, {99}, {101}},
    {"leaves no gap for a pause",
     "f100000 s104480 p s104500 f106000 s109000 r s109020 f109030",
     {100'000, 104'490},
     {104'480, 104'480},
     {}},
    {"adds up two pauses; the frame at 2050 comes to lie above the last one",
     "f0 s40 p r s1040 s1050 p f1500 r r f2050 f2083 s2090",
     {0, 50, 83},
     {40, 40, 50, 90},
     {}},
    {"drops the frame that would repeat a time", "f100 p r f300 f333", {100, 133}, {}, {}},
    {"goes by the highest time, not by the late sound at 120, and holds only frames to their order",
     "f100 s150 s120 p r s145 f160 f155",
     {100, 165},
     {150, 120, 150},
     {}},
    {"counts the time of a dropped sound", "f100 d200 p r s500", {100}, {200}, {}},
    {"keeps a pause before the first sample as a gap; the file opens all the same",
     "p f100 r f400",
     {400},
     {},
     {}}};

} // namespace

TEST_P(ScreenTimelineTest, PlacesSamplesInTheFile)
{
    start();
    play(GetParam().script);
    EXPECT_EQ(times(video()), GetParam().video) << GetParam().what;
    EXPECT_EQ(times(systemSound()), GetParam().systemSound) << GetParam().what;
    EXPECT_EQ(times(microphone()), GetParam().microphone) << GetParam().what;
}

INSTANTIATE_TEST_SUITE_P(Cases, ScreenTimelineTest, testing::ValuesIn(kCases));

} // namespace zivra::test
