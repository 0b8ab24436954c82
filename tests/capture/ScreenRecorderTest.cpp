#include "capture/RecorderFixture.h"
#include "capture/ZivraError.h"
#include "support/PrintQt.h"

namespace zivra::test {

using ScreenRecorderTest = RecorderTest;

TEST_F(ScreenRecorderTest, AsksForWhatTheOptionsSay)
{
    options.outputSize = QSizeF(641.9, 360.5);
    options.sourceRect = QRectF(1, 2, 3, 4);
    options.showClicks = true;
    options.filter.displayID = 7;
    start();
    const CaptureConfiguration &asked = streams.configuration;
    EXPECT_EQ(streams.filter, options.filter);
    EXPECT_EQ(asked.outputSize, QSize(641, 360));
    EXPECT_EQ(asked.sourceRect, options.sourceRect);
    EXPECT_EQ(asked.minimumFrameInterval.nanoseconds(), 33'333'333);
    EXPECT_TRUE(asked.showsCursor && asked.showsMouseClicks);
    EXPECT_TRUE(asked.capturesAudio && asked.capturesMicrophone);
    EXPECT_EQ(asked.microphoneDeviceID, "mic");

    options.captureSystemAudio = false;
    options.microphoneID.reset();
    startWithFrame();
    EXPECT_FALSE(asked.capturesAudio || asked.capturesMicrophone);
    EXPECT_EQ(writer().inputs.size(), 1U);
}

TEST_F(ScreenRecorderTest, ChoosesCodecAndBitRateBySize)
{
    const std::vector<std::tuple<QSizeF, VideoCodec, std::int64_t>> table{
        {{1920, 1080}, VideoCodec::H264, 9'331'200},
        {{640, 360}, VideoCodec::H264, 2'000'000},
        {{4096, 2304}, VideoCodec::H264, 42'467'328},
        {{4097.5, 2}, VideoCodec::Hevc, 2'000'000},
        {{2, 2305}, VideoCodec::Hevc, 2'000'000}};
    for (const auto &[size, codec, bitRate] : table) {
        options.outputSize = size;
        startWithFrame();
        const VideoSettings settings = video().video.value();
        EXPECT_EQ(settings.width, static_cast<int>(size.width()));
        EXPECT_EQ(settings.codec, codec) << size.width();
        EXPECT_EQ(settings.averageBitRate, bitRate);
        EXPECT_TRUE(video().realTime && systemSound().realTime && microphone().realTime);
    }
}

TEST_F(ScreenRecorderTest, FollowsTheNewestSoundFormatBeforeTheFirstFrame)
{
    using Encoded = std::array<std::int64_t, 3>; // rate, channels, bits a second
    const std::vector<std::tuple<std::vector<AudioFormat>, Encoded, Encoded>> table{
        {{}, {48000, 1, 96000}, {48000, 2, 160000}},
        {{{48000, 2}, {44100, 1}}, {44100, 1, 96000}, {44100, 1, 96000}},
        {{{32000, 6}}, {48000, 2, 160000}, {48000, 2, 160000}},
        {{{44100.5, 0}}, {48000, 1, 96000}, {48000, 1, 96000}}};
    const auto encoded = [](const FakeInput &input) {
        return Encoded{std::int64_t(input.audio->sampleRate), input.audio->channels, input.audio->bitRate};
    };
    for (const auto &[seen, expectedMicrophone, expectedSystem] : table) {
        start();
        for (const AudioFormat &format : seen) {
            sound(1, CaptureOutput::Microphone, format);
            sound(1, CaptureOutput::Audio, format);
        }
        frame(2);
        sound(3, CaptureOutput::Audio, {8000, 1});
        queues.run();
        EXPECT_EQ(encoded(microphone()), expectedMicrophone);
        EXPECT_EQ(encoded(systemSound()), expectedSystem);
    }
}

TEST_F(ScreenRecorderTest, FinishesTheFileAfterEverySampleThatIsQueued)
{
    start();
    frame(100);
    auto stopping = recorder->stop();
    sound(120);
    EXPECT_EQ(await(std::move(stopping), &queues), options.outputURL);
    EXPECT_EQ(writer().type, MovieFileType::Mpeg4);
    EXPECT_EQ(writer().sessionStart, MediaTime::fromMilliseconds(100));
    EXPECT_EQ(video().appended.back().timing().duration, MediaTime::fromMilliseconds(10));
    EXPECT_EQ(streams.alive, 0);
    EXPECT_TRUE(video().finished && systemSound().finished && microphone().finished);
    EXPECT_EQ(times(video()), Times({100}));
    EXPECT_TRUE(errors.isEmpty());
}

TEST_F(ScreenRecorderTest, HasNoFileWithoutAFrameOrAfterAFailure)
{
    start();
    sound(1);
    EXPECT_EQ(stop(), std::nullopt);
    EXPECT_TRUE(movies.writers.empty());

    startWithFrame();
    writer().fail(trouble);
    frame(2);
    EXPECT_EQ(stop(), std::nullopt);
    EXPECT_FALSE(video().finished);

    movies.onWriter = [](WriterRecord &record) { record.finishFails = true; };
    startWithFrame();
    EXPECT_EQ(stop(), std::nullopt);
}

TEST_F(ScreenRecorderTest, ReportsAFileThatCannotBeBegun)
{
    movies.makeWriterError = trouble;
    startWithFrame();
    movies.makeWriterError = nullptr;
    frame(2);
    queues.run();
    EXPECT_EQ(std::exchange(errors, {}), QStringList("trouble")) << "once, and nothing is tried again";

    movies.onWriter = [](WriterRecord &record) { record.startFails = true; };
    startWithFrame();
    EXPECT_EQ(errors, QStringList(ZivraError(ZivraError::recordingFailed).errorDescription()));
    EXPECT_EQ(stop(), std::nullopt);
    EXPECT_EQ(streams.stops, 1);
}

TEST_F(ScreenRecorderTest, SavesWhatItHasWhenTheCaptureOrTheDiskGivesUp)
{
    streams.stopping.error = trouble;
    startWithFrame();
    writer().onInterruption(trouble);
    streams.die(trouble);
    frame(2);
    EXPECT_EQ(stop(), options.outputURL);
    EXPECT_EQ(errors, QStringList({"trouble", "trouble"}));
    EXPECT_EQ(times(video()), Times({1, 2}));
}

TEST_F(ScreenRecorderTest, ThrowsWhatKeepsTheCaptureFromStarting)
{
    streams.starting.error = trouble;
    EXPECT_THROW(start(), PlatformError);
    recorder.reset();
    EXPECT_EQ(streams.alive, 0);
}

TEST_F(ScreenRecorderTest, MayBeDroppedAtAnyMoment)
{
    streams.starting.held = true;
    auto begun = starting();
    recorder.reset();
    streams.starting.release();
    await(std::move(begun), &queues);

    streams.starting.held = false;
    startWithFrame();
    frame(2);
    recorder->pause();
    recorder.reset();
    EXPECT_TRUE(writer().isAlive) << "goes on its queue";
    queues.run();
    EXPECT_FALSE(writer().isAlive);

    streams.stopping.held = true;
    startWithFrame();
    auto stopping = recorder->stop();
    recorder.reset();
    streams.stopping.release();
    EXPECT_EQ(await(std::move(stopping), &queues), options.outputURL);
}

} // namespace zivra::test
