#include "capture/AudioMerger.h"

#include "capture/ZivraError.h"
#include "support/PrintQt.h"
#include "support/fakes/Await.h"
#include "support/fakes/FakeFileSystem.h"
#include "support/fakes/FakeMovieServices.h"

#include <gtest/gtest.h>

namespace zivra::test {

namespace {

MediaSample packet(std::int64_t milliseconds)
{
    return {std::make_shared<const EncodedPacket>(), {MediaTime::fromMilliseconds(milliseconds), {}, {}}};
}

struct AudioMergerTest : testing::Test {
    QUrl addMovie(const QString &name, int audioTracks, int videoTracks = 1)
    {
        auto asset = std::make_shared<FakeAsset>();
        asset->location = files.addFile(name, "source");
        asset->allTracks.resize(audioTracks, {1, MediaType::Audio, {}, {}});
        asset->allTracks.resize(audioTracks + videoTracks, {0, MediaType::Video, {format}, transform});
        asset->videoSamples = {packet(0), packet(33), packet(66)};
        asset->mixSamples = {packet(0), packet(20)};
        movies.assets[asset->location] = asset;
        return asset->location;
    }
    QCoro::Task<> merging(const QUrl &url)
    {
        return AudioMerger::mergeAudioTracksIfNeeded(url, movies, files, queues);
    }
    void merge(const QUrl &url) { await(merging(url), &queues); }
    void expectRefused(QCoro::Task<> &&task, const QString &reason)
    {
        try {
            await(std::move(task), &queues);
            ADD_FAILURE() << "merged";
        } catch (const std::exception &error) {
            EXPECT_EQ(QString(error.what()), reason);
        }
        EXPECT_EQ(files.names("."), QStringList("a.mp4"));
        EXPECT_EQ(files.read(movies.assets.begin()->first), "source");
    }

    const std::shared_ptr<const TrackFormat> format = std::make_shared<FakeTrackFormat>();
    const TrackTransform transform{0, 1, 0, -1, 0, 0, 0, 0, 1};
    const QString recordingFailed = ZivraError(ZivraError::recordingFailed).errorDescription();
    const std::exception_ptr trouble = std::make_exception_ptr(PlatformError("trouble"));
    FakeFileSystem files;
    FakeMovieServices movies;
    ManualQueueFactory queues;
};

} // namespace

TEST_F(AudioMergerTest, CopiesVideoAndMixesAllSound)
{
    const QUrl url = addMovie("a.mp4", 1);
    merge(url);
    EXPECT_EQ(files.read(url), "source") << "one track needs no mix";
    addMovie("a.mp4", 3);
    merge(url);
    const WriterRecord &writer = *movies.writers.at(0);
    EXPECT_TRUE(writer.url.fileName().startsWith(".merge-"));
    EXPECT_EQ(writer.type, MovieFileType::Mpeg4);
    EXPECT_EQ(writer.sessionStart, MediaTime::zero());
    ASSERT_EQ(writer.inputs.size(), 2U);
    const FakeInput &video = *writer.inputs.at(0);
    const FakeInput &audio = *writer.inputs.at(1);
    EXPECT_EQ(video.format, format);
    EXPECT_EQ(video.transform, transform);
    EXPECT_EQ(video.appended.size(), 3U);
    EXPECT_EQ(audio.appended.size(), 2U);
    EXPECT_FALSE(video.realTime || audio.realTime);
    EXPECT_EQ(audio.audio->bitRate, 160000);
    EXPECT_EQ(movies.reader->mixedTracks.size(), 3U);
    EXPECT_EQ(movies.reader->mixFormat, (AudioFormat{48000, 2}));
    EXPECT_EQ(files.names("."), QStringList("a.mp4"));
    EXPECT_EQ(files.read(url), "") << "now the written file";
}

TEST_F(AudioMergerTest, PrefersTheMixThatIsReady)
{
    const QUrl url = addMovie("a.mp4", 2);
    movies.mixed = {url};
    merge(url);
    EXPECT_TRUE(movies.mixed.empty() && movies.writers.empty());
}

TEST_F(AudioMergerTest, KeepsTheContainerAndNeedsNoVideo)
{
    merge(addMovie("a.mov", 2, 0));
    EXPECT_EQ(movies.writers.at(0)->type, MovieFileType::QuickTime);
    EXPECT_EQ(movies.writers.at(0)->inputs.size(), 1U);
}

TEST_F(AudioMergerTest, CopiesEachStreamAsFastAsTheWriterTakesIt)
{
    auto task = merging(addMovie("a.mp4", 2));
    FakeInput &video = *movies.writers.at(0)->inputs.at(0);
    FakeInput &audio = *movies.writers.at(0)->inputs.at(1);
    video.readyFor = 2;
    settle(&queues);
    EXPECT_EQ(video.appended.size(), 2U);
    EXPECT_TRUE(audio.finished && !video.finished);
    video.becomeReady(1);
    video.becomeReady(2);
    await(std::move(task), &queues);
    EXPECT_EQ(video.appended.size(), 3U);
    EXPECT_TRUE(video.finished);
}

TEST_F(AudioMergerTest, KeepsTheSourceWhenAnythingFails)
{
    const QUrl url = addMovie("a.mp4", 2);
    movies.onReader = [](ReaderRecord &record) { record.startFails = true; };
    expectRefused(merging(url), recordingFailed);
    movies.onReader = [this](ReaderRecord &record) {
        record.breaksAtTheEnd = true;
        record.error = trouble;
    };
    expectRefused(merging(url), "trouble");
    movies.onReader = {};
    movies.onWriter = [](WriterRecord &record) { record.startFails = true; };
    expectRefused(merging(url), recordingFailed);
    movies.onWriter = [](WriterRecord &record) { record.finishFails = true; };
    expectRefused(merging(url), recordingFailed);
    movies.onWriter = {};
    auto task = merging(url);
    movies.writers.back()->inputs.front()->readyFor = 1;
    settle(&queues);
    movies.writers.back()->fail(trouble);
    expectRefused(std::move(task), "trouble");
    movies.makeWriterError = trouble;
    expectRefused(merging(url), "trouble");
    EXPECT_THROW(merge(QUrl("file:/unknown.mp4")), PlatformError);
}

} // namespace zivra::test
