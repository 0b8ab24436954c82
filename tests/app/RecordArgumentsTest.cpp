#include "app/RecordArguments.h"

#include <gtest/gtest.h>

#include <tuple>

namespace zivra {

namespace {

RecordArguments parsed(const char *line)
{
    return RecordArguments::parse(QString::fromUtf8(line).split(' ', Qt::SkipEmptyParts));
}

} // namespace

TEST(RecordArguments, ReadsEveryOption)
{
    const RecordArguments all =
        parsed("--seconds 2.5 --mode screenOnly --area customArea --rect 10,20,300,200 "
               "--display 66 --quality 720 --system-audio --microphone mic.1 --clicks");
    EXPECT_EQ(all.seconds, 2.5);
    EXPECT_EQ(all.area, CaptureArea::CustomArea);
    EXPECT_EQ(all.rectangle, QRectF(10, 20, 300, 200));
    EXPECT_EQ(all.displayID, 66U);
    EXPECT_EQ(all.quality, VideoQuality::Medium);
    EXPECT_TRUE(all.systemAudio && all.microphone && all.clicks);
    EXPECT_EQ(all.microphoneID, "mic.1");

    const RecordArguments defaults = parsed("");
    EXPECT_FALSE(defaults.seconds || defaults.systemAudio || defaults.microphone || defaults.clicks);
    EXPECT_EQ(defaults.area, CaptureArea::FullScreen);
    EXPECT_EQ(parsed("--microphone --clicks").microphoneID, "") << "its value may be left out";
    EXPECT_EQ(parsed("--camera cam --mode cameraOnly").cameraID, "cam");
    EXPECT_EQ(parsed("--window 0x1400003").windowID, 0x1400003U);
    EXPECT_EQ(parsed("--window 5").area, CaptureArea::Window) << "a window names its area";
    EXPECT_EQ(parsed("--rect 0,0,8,8").area, CaptureArea::CustomArea);
}

TEST(RecordArguments, RefusesInOneLine)
{
    for (const char *bad :
         {"--seconds",      "--seconds 0",       "--seconds -1",     "--seconds nan",  "--seconds 1e99",
          "--seconds five", "--mode camera",     "--area screen",    "--mode",         "--camera",
          "--area window",  "--area customArea", "--window no",      "--window -1",    "--display 0",
          "--rect 1,2,3",   "--rect 1,2,3,0",    "--rect 1,2,3,4,5", "--rect a,b,c,d", "--rect -1,0,5,5",
          "--quality 1081", "--quality",         "--frames 3",       "stray"}) {
        try {
            std::ignore = parsed(bad);
            ADD_FAILURE() << "accepted: " << bad;
        } catch (const ArgumentError &error) {
            EXPECT_EQ(QString(error.what()).count('\n'), 0) << bad;
            EXPECT_GT(QString(error.what()).size(), 10) << bad;
        }
    }
}

} // namespace zivra
