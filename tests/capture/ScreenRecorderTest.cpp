#include "capture/RecorderFixture.h"
#include "capture/ZivraError.h"
#include "support/PrintQt.h"

namespace zivra::test {

namespace {

using ScreenRecorderTest = RecorderTest;

std::exception_ptr trouble()
{
    return std::make_exception_ptr(PlatformError("trouble"));
}

} // namespace

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
    EXPECT_TRUE(asked.showsCursor && asked.showsMouseClicks && asked.capturesAudio &&
                asked.capturesMicrophone);
    EXPECT_EQ(asked.microphoneDeviceID, "mic");
    EXPECT_EQ(streams.outputs,
              (std::vector{CaptureOutput::Screen, CaptureOutput::Audio, CaptureOutput::Microphone}));

    options.captureSystemAudio = false;
    options.microphoneID.reset();
    start();
    EXPECT_EQ(streams.outputs, std::vector{CaptureOutput::Screen});
    EXPECT_FALSE(streams.configuration.capturesAudio || streams.configuration.capturesMicrophone);
    frame(1);
    EXPECT_EQ(writer().inputs.size(), 1U);
}

TEST_F(ScreenRecorderTest, ChoosesCodecAndBitRateBySize)
{
    struct Row {
        QSizeF size;
        VideoCodec codec;
        std::int64_t bitRate;
    };
    const std::vector<Row> table{{{1920, 1080}, VideoCodec::H264, 9'331'200},
                                 {{640, 360}, VideoCodec::H264, 2'000'000},
                                 {{4096, 2304}, VideoCodec::H264, 42'467'328},
                                 {{4097.5, 2}, VideoCodec::Hevc, 2'000'000},
                                 {{2, 2305}, VideoCodec::Hevc, 2'000'000}};
    for (const Row &row : table) {
        options.outputSize = row.size;
        start();
        frame(1);
        const VideoSettings settings = video().video.value();
        EXPECT_EQ(settings.width, static_cast<int>(row.size.width()));
        EXPECT_EQ(settings.codec, row.codec) << row.size.width();
        EXPECT_EQ(settings.averageBitRate, row.bitRate);
        EXPECT_EQ(settings.expectedSourceFrameRate, 30);
        EXPECT_EQ(settings.maxKeyFrameInterval, 60);
        EXPECT_TRUE(video().realTime && systemSound().realTime && microphone().realTime);
    }
}

TEST_F(ScreenRecorderTest, FollowsTheNewestSoundFormatBeforeTheFirstFrame)
{
    struct Row {
        std::vector<AudioFormat> seen;
        AudioSettings microphone;
        AudioSettings system;
    };
    const AudioSettings mono48{48000, 1, 96000};
    const AudioSettings stereo48{48000, 2, 160000};
    const AudioSettings mono44{44100, 1, 96000};
    const std::vector<Row> table{{{}, mono48, stereo48},
                                 {{{48000, 2}, {44100, 1}}, mono44, mono44},
                                 {{{32000, 6}}, stereo48, stereo48},
                                 {{{44100.5, 0}}, mono48, mono48}};
    for (const Row &row : table) {
        start();
        for (const AudioFormat &format : row.seen) {
            sound(1, CaptureOutput::Microphone, format);
            sound(1, CaptureOutput::Audio, format);
        }
        frame(2);
        sound(3, CaptureOutput::Audio, {8000, 1});
        for (const auto &[input, expected] :
             {std::pair{&microphone(), row.microphone}, {&systemSound(), row.system}}) {
            EXPECT_EQ(input->audio->sampleRate, expected.sampleRate);
            EXPECT_EQ(input->audio->channels, expected.channels);
            EXPECT_EQ(input->audio->bitRate, expected.bitRate);
        }
    }
}

TEST_F(ScreenRecorderTest, FinishesTheFileAfterEverySampleThatIsQueued)
{
    start();
    frame(100);
    recorder->pause();
    recorder->resume();
    auto stopping = recorder->stop();
    streams.deliver(CaptureOutput::Audio, {std::make_shared<const AudioBlock>(), at(120)});
    EXPECT_EQ(await(std::move(stopping), &queues), options.outputURL);
    EXPECT_EQ(writer().type, MovieFileType::Mpeg4);
    EXPECT_EQ(streams.alive, 0);
    EXPECT_TRUE(video().finished && systemSound().finished && microphone().finished);
    frame(200);
    EXPECT_EQ(times(video()), Times({100}));
    EXPECT_TRUE(errors.isEmpty());
}

TEST_F(ScreenRecorderTest, HasNoFileWithoutAFrameOrAfterAFailure)
{
    start();
    sound(1);
    EXPECT_EQ(stop(), std::nullopt);
    frame(2);
    EXPECT_TRUE(movies.writers.empty());

    start();
    frame(1);
    writer().fail(trouble());
    frame(2);
    EXPECT_EQ(times(video()), Times({1}));
    EXPECT_EQ(stop(), std::nullopt);
    EXPECT_FALSE(video().finished);

    movies.onWriter = [](WriterRecord &record) { record.finishFails = true; };
    start();
    frame(1);
    EXPECT_EQ(stop(), std::nullopt);
}

TEST_F(ScreenRecorderTest, ReportsAFileThatCannotBeBegun)
{
    movies.makeWriterError = trouble();
    start();
    frame(1);
    movies.makeWriterError = nullptr;
    frame(2);
    EXPECT_EQ(std::exchange(errors, {}), QStringList("trouble")) << "once, and nothing is tried again";

    movies.onWriter = [](WriterRecord &record) { record.startFails = true; };
    start();
    frame(1);
    EXPECT_EQ(errors, QStringList(ZivraError(ZivraError::recordingFailed).errorDescription()));
    EXPECT_EQ(stop(), std::nullopt);
    EXPECT_EQ(streams.stops, 1);
}

TEST_F(ScreenRecorderTest, SavesWhatItHasWhenTheCaptureOrTheDiskGivesUp)
{
    streams.stopping.error = trouble();
    start();
    frame(1);
    writer().onInterruption(trouble());
    streams.die(trouble());
    frame(2);
    EXPECT_EQ(errors, QStringList({"trouble", "trouble"}));
    EXPECT_EQ(stop(), options.outputURL);
    EXPECT_EQ(times(video()), Times({1, 2}));
}

TEST_F(ScreenRecorderTest, ThrowsWhatKeepsTheCaptureFromStarting)
{
    streams.starting.error = trouble();
    EXPECT_THROW(start(), PlatformError);
    recorder.reset();
    EXPECT_EQ(streams.alive, 0);
    streams.starting.error = nullptr;
    streams.addOutputError = trouble();
    EXPECT_THROW(start(), PlatformError);
    EXPECT_EQ(streams.alive, 0);
    EXPECT_EQ(stop(), std::nullopt);
}

TEST_F(ScreenRecorderTest, MayBeDroppedAtAnyMoment)
{
    streams.starting.held = true;
    make();
    auto starting = recorder->start();
    recorder.reset();
    streams.starting.release();
    await(std::move(starting), &queues);

    streams.starting.held = false;
    start();
    frame(1);
    streams.deliver(CaptureOutput::Screen,
                    {std::make_shared<const VideoFrame>(), at(2), FrameStatus::Complete});
    recorder->pause();
    recorder.reset();
    EXPECT_TRUE(writer().isAlive) << "goes on its queue";
    queues.run();
    EXPECT_FALSE(writer().isAlive);

    streams.stopping.held = true;
    start();
    frame(1);
    auto stopping = recorder->stop();
    recorder.reset();
    streams.stopping.release();
    EXPECT_EQ(await(std::move(stopping), &queues), options.outputURL);
}

} // namespace zivra::test
