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
    /// A movie on the disk with one video track, or none, and so many audio tracks.
    QUrl addMovie(const QString &name, int audioTracks, bool withVideo = true)
    {
        const QUrl url = files.addFile(name, "source");
        auto asset = std::make_shared<FakeAsset>();
        asset->location = url;
        if (withVideo) {
            asset->allTracks.push_back({0, MediaType::Video, {format}, transform});
        }
        for (int index = 1; index <= audioTracks; ++index) {
            asset->allTracks.push_back({index, MediaType::Audio, {}, {}});
        }
        asset->videoSamples = {packet(0), packet(33), packet(66)};
        asset->mixSamples = {packet(0), packet(20)};
        movies.assets[url] = asset;
        return url;
    }
    void merge(const QUrl &url)
    {
        await(AudioMerger::mergeAudioTracksIfNeeded(url, movies, files, queues), &queues);
    }
    /// The merge is refused, and nothing but the source remains.
    void expectRefused(const QString &reason)
    {
        const QUrl url = addMovie("a.mp4", 2);
        try {
            merge(url);
            ADD_FAILURE() << "merged";
        } catch (const std::exception &error) {
            EXPECT_EQ(QString(error.what()), reason);
        }
        EXPECT_EQ(files.names("."), QStringList("a.mp4"));
        EXPECT_EQ(content(url), "source");
    }
    static QByteArray content(const QUrl &url)
    {
        QFile file(url.toLocalFile());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : "unreadable";
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

TEST_F(AudioMergerTest, LeavesFilesWithOneAudioTrackAlone)
{
    for (const int tracks : {0, 1}) {
        merge(addMovie("a.mp4", tracks));
        EXPECT_TRUE(movies.writers.empty());
    }
    EXPECT_EQ(content(addMovie("a.mp4", 1)), "source");
}

TEST_F(AudioMergerTest, CopiesVideoAndMixesAllSound)
{
    const QUrl url = addMovie("a.mp4", 3);
    merge(url);
    const WriterRecord &writer = *movies.writers.at(0);
    EXPECT_TRUE(writer.url.fileName().startsWith(".merge-") && writer.url.fileName().endsWith(".mp4"));
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
    EXPECT_EQ(queues.queues.size(), 2U);
    EXPECT_TRUE(queues.queues.contains("zivra.merge.0") && queues.queues.contains("zivra.merge.1"));
    EXPECT_EQ(files.names("."), QStringList("a.mp4"));
    EXPECT_EQ(content(url), "") << "now the written file";
}

TEST_F(AudioMergerTest, KeepsTheContainerAndNeedsNoVideo)
{
    merge(addMovie("a.mov", 2, false));
    EXPECT_EQ(movies.writers.at(0)->type, MovieFileType::QuickTime);
    EXPECT_EQ(movies.writers.at(0)->inputs.size(), 1U);
    EXPECT_EQ(queues.queues.size(), 1U);
}

TEST_F(AudioMergerTest, CopiesAsFastAsTheWriterTakesIt)
{
    movies.onWriter = [](WriterRecord &record) { record.finishing.held = true; };
    auto merging = AudioMerger::mergeAudioTracksIfNeeded(addMovie("a.mp4", 2), movies, files, queues);
    WriterRecord &writer = *movies.writers.at(0);
    FakeInput &video = *writer.inputs.at(0);
    video.readyFor = 2;
    settle(&queues);
    EXPECT_EQ(video.appended.size(), 2U);
    EXPECT_FALSE(video.finished);
    EXPECT_TRUE(writer.inputs.at(1)->finished) << "each stream goes on by itself";
    video.becomeReady(1);
    video.becomeReady(2);
    settle(&queues);
    EXPECT_EQ(video.appended.size(), 3U);
    EXPECT_TRUE(video.finished);
    EXPECT_FALSE(merging.isReady());
    writer.finishing.release();
    await(std::move(merging), &queues);
}

TEST_F(AudioMergerTest, KeepsTheSourceWhenAnythingFails)
{
    movies.onReader = [](ReaderRecord &record) { record.startFails = true; };
    expectRefused(recordingFailed);
    movies.onReader = [this](ReaderRecord &record) {
        record.breaksAtTheEnd = true;
        record.error = trouble;
    };
    expectRefused("trouble");
    movies.onReader = {};
    movies.onWriter = [this](WriterRecord &record) {
        record.startFails = true;
        record.error = trouble;
    };
    expectRefused("trouble");
    movies.onWriter = [](WriterRecord &record) { record.finishFails = true; };
    expectRefused(recordingFailed);
    movies.makeWriterError = trouble;
    expectRefused("trouble");
    EXPECT_THROW(merge(files.addFile("unknown.mp4")), PlatformError);
}

TEST_F(AudioMergerTest, EndsWhenTheWriterFailsMeanwhile)
{
    for (const bool whileWaiting : {true, false}) {
        const QUrl url = addMovie("a.mp4", 2);
        auto merging = AudioMerger::mergeAudioTracksIfNeeded(url, movies, files, queues);
        WriterRecord &writer = *movies.writers.back();
        for (const auto &input : writer.inputs) {
            input->readyFor = whileWaiting ? 1 : 100;
        }
        if (whileWaiting) {
            settle(&queues);
        }
        writer.fail(trouble);
        EXPECT_THROW(await(std::move(merging), &queues), PlatformError);
        EXPECT_EQ(files.names("."), QStringList("a.mp4"));
        EXPECT_EQ(content(url), "source");
    }
}

TEST_F(AudioMergerTest, LeavesTheHiddenCopyWhenItCannotReplaceTheSource)
{
    files.replaceFails = true;
    const QUrl url = addMovie("a.mp4", 2);
    EXPECT_THROW(merge(url), PlatformError);
    EXPECT_EQ(content(url), "source");
}

} // namespace zivra::test
