#include "capture/AudioMerger.h"
#include "desktop/media/FFmpegMovieServices.h"
#include "desktop/media/MovieProbe.h"
#include "desktop/media/TestMovie.h"
#include "desktop/threads/ThreadSerialQueue.h"
#include "platform/PlatformError.h"
#include "support/PrintQt.h"
#include "support/fakes/Await.h"
#include "support/fakes/FakeFileSystem.h"

#include <QFile>

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <array>
#include <csignal>

namespace zivra::test {

using desktop::FFmpegMovieServices;

namespace {

/// In seconds; uneven, as those of a screen are.
double pictureTime(int number)
{
    constexpr std::array kOffsets{0.3, -0.4, 0.0};
    return number == 0 ? 0 : (number + kOffsets.at(static_cast<std::size_t>(number) % 3)) / 30;
}

struct MovieReaderTest : testing::Test {
    const MovieFolder folder;
    FFmpegMovieServices services;
    FakeFileSystem files;
    desktop::ThreadSerialQueueFactory queues;

    /// `seconds` of numbered pictures, about 30 a second, and the given sounds, each in a track of its own;
    /// in real time no more than 2 seconds of each.
    void write(const QUrl &url, MovieFileType type, double seconds,
               const std::vector<std::vector<MediaSample>> &sounds, bool realTimeSound = false)
    {
        const auto writer = services.makeWriter(url, type);
        auto &video = writer->addVideoInput(videoSettings());
        std::vector<MovieWriterInput *> audio;
        for (std::size_t i = 0; i < sounds.size(); ++i) {
            audio.push_back(&writer->addAudioInput({.sampleRate = i == 0 ? 48000.0 : 44100.0}));
            audio.back()->setExpectsMediaDataInRealTime(realTimeSound);
        }
        ASSERT_TRUE(writer->startWriting()) << errorText(writer->error()).toStdString();
        writer->startSession(kSessionStart);
        for (std::size_t i = 0; i < sounds.size(); ++i) {
            for (const auto &sample : sounds[i]) {
                audio[i]->append(sample);
            }
            audio[i]->markAsFinished();
        }
        for (int i = 0; i < int(seconds * 30); ++i) {
            video.append(numberedFrame(i, pictureTime(i)));
        }
        writer->finishWriting().waitForFinished();
        ASSERT_EQ(writer->status(), MovieWriter::Status::Completed);
    }

    std::shared_ptr<const MovieAsset> open(const QUrl &url) { return services.openAsset(url).result(); }

    void merge(const QUrl &url)
    {
        await(AudioMerger::mergeAudioTracksIfNeeded(url, services, files, queues));
    }
};

/// No file grows beyond it, in bytes, while this lives.
class FileSizeLimit {
public:
    explicit FileSizeLimit(qint64 bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limited{static_cast<rlim_t>(bytes), m_before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limited);
    }
    ~FileSizeLimit() { ::setrlimit(RLIMIT_FSIZE, &m_before); }
    FileSizeLimit(const FileSizeLimit &) = delete;
    FileSizeLimit &operator=(const FileSizeLimit &) = delete;

private:
    rlimit m_before{};
};

} // namespace

TEST_F(MovieReaderTest, MergesSoundTracksInTheirPlacesAndKeepsThePicture)
{
    const SoundOptions tone{.toneLevel = 0.6F};
    const SoundOptions click{.format = {44100, 1}, .clicks = {1.5, 2.75}};
    const std::vector sounds{std::vector{soundBlock(0, 1, tone), soundBlock(1.4, 0.4, click)},
                             std::vector{soundBlock(0.3, 0.7, tone), soundBlock(2.5, 0.4, click)}};
    write(folder.url("ready.mp4"), MovieFileType::Mpeg4, 3, sounds, true);
    write(folder.url("plain.mov"), MovieFileType::QuickTime, 3, sounds);
    for (const auto *name : {"ready.mp4", "plain.mov"}) {
        const QUrl url = folder.url(name);
        const MovieProbe source(url);
        EXPECT_EQ(source.sounds.size(), 2U);
        merge(url);
        merge(url);
        EXPECT_FALSE(services.useReadyMix(url).result()) << "it is used, or there was none";
        EXPECT_EQ(folder.names().size(), 2);

        const MovieProbe probe(url);
        EXPECT_EQ(probe.duration, source.duration);
        EXPECT_EQ(probe.videoTag, source.videoTag);
        ASSERT_EQ(probe.pictures.size(), 90U);
        for (std::size_t i = 0; i < 90; ++i) {
            EXPECT_DOUBLE_EQ(probe.pictures[i].time, source.pictures[i].time);
        }
        ASSERT_EQ(probe.sounds.size(), 1U);
        const auto start = probe.sounds[0].samples.begin();
        const auto loudest = *std::max_element(start, start + 40000);
        EXPECT_GT(loudest, 0.9) << "both together";
        EXPECT_LT(loudest, 1.05) << "too loud for full scale";
        probe.sounds[0].expectClicks({1.5, 2.75}, 1.2);
    }
}

TEST_F(MovieReaderTest, KeepsBothSoundsWhenTheyCannotBeMerged)
{
    const QUrl url = folder.url("movie.mp4");
    const std::vector sound{soundBlock(0, 5, {.toneLevel = 0.3F})};
    write(url, MovieFileType::Mpeg4, 5, {sound, sound});
    {
        const FileSizeLimit limit(3000);
        EXPECT_THROW(merge(url), PlatformError) << "as on a full disk";
    }
    EXPECT_EQ(folder.names(), QStringList("movie.mp4"));
    EXPECT_EQ(MovieProbe(url).sounds.size(), 2U);
    EXPECT_THROW(merge(folder.url("none.mp4")), PlatformError);
}

TEST_F(MovieReaderTest, TrimsToTheVeryPictureInSync)
{
    for (const auto type : {MovieFileType::Mpeg4, MovieFileType::QuickTime}) {
        const MovieFolder folder;
        const auto url = folder.url("long");
        write(url, type, 6, {{soundBlock(0, 6, {.clicks = {2.5, 4.0}})}});
        const auto asset = open(url);
        const auto target = folder.url("trim");
        // In the middle of a group of pictures, from the 71st picture up to but not including the 131st.
        const MediaTimeRange range{MediaTime::fromFraction(71, 30), MediaTime::fromSeconds(2)};
        services.exportPassthrough(asset, range, target, type).waitForFinished();

        const MovieProbe probe(target);
        EXPECT_NEAR(probe.duration, 2, 0.001);
        ASSERT_EQ(probe.pictures.size(), 60U);
        for (std::size_t i = 0; i < 60; ++i) {
            EXPECT_EQ(probe.pictures[i].number, int(i) + 71);
            EXPECT_NEAR(probe.pictures[i].time, pictureTime(int(i) + 71) - 71 / 30.0, 0.0001);
        }
        probe.sounds.at(0).expectClicks({2.5 - 71 / 30.0, 4.0 - 71 / 30.0});
        EXPECT_NEAR(probe.sounds[0].end(), 2, 0.03);

        EXPECT_THROW(services.exportPassthrough(asset, range, target, type).waitForFinished(), PlatformError)
            << "it exists now";
        const MediaTimeRange beyond{MediaTime::fromSeconds(7), MediaTime::fromSeconds(1)};
        EXPECT_THROW(services.exportPassthrough(asset, beyond, folder.url("none"), type).waitForFinished(),
                     PlatformError);
        EXPECT_FALSE(QFile::exists(folder.url("none").toLocalFile()));
    }
}

TEST_F(MovieReaderTest, TellsTruncatedAndForeignFiles)
{
    const auto url = folder.url("movie.mp4");
    write(url, MovieFileType::Mpeg4, 2, {{soundBlock(0, 2, {.toneLevel = 0.3F})}});
    EXPECT_THROW(services.openAsset(folder.url("none.mp4")).waitForFinished(), PlatformError);
    QFile foreign(folder.url("text.mp4").toLocalFile());
    ASSERT_TRUE(foreign.open(QIODevice::WriteOnly));
    foreign.write(QByteArray(10'000, 'x'));
    foreign.close();
    EXPECT_THROW(services.openAsset(folder.url("text.mp4")).waitForFinished(), PlatformError);

    ASSERT_TRUE(QFile::resize(url.toLocalFile(), QFile(url.toLocalFile()).size() - 5000));
    EXPECT_THROW(services.openAsset(url).waitForFinished(), PlatformError) << "its index is cut off";
}

} // namespace zivra::test
