#include "desktop/media/FFmpegMovieServices.h"
#include "desktop/media/MovieProbe.h"
#include "desktop/media/TestMovie.h"
#include "platform/PlatformError.h"

#include <QFile>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

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

    static void copyAll(MovieReaderOutput &output, MovieWriterInput &input)
    {
        while (const auto sample = output.copyNextSample()) {
            EXPECT_TRUE(input.append(*sample));
        }
        input.markAsFinished();
    }
};

} // namespace

TEST_F(MovieReaderTest, MergesSoundTracksInTheirPlacesAndKeepsThePicture)
{
    const SoundOptions tone{.toneLevel = 0.6F};
    const SoundOptions click{.format = {44100, 1}, .clicks = {1.5, 2.75}};
    write(folder.url("two.mp4"), MovieFileType::Mpeg4, 3,
          {{soundBlock(0, 1, tone), soundBlock(1.4, 0.4, click)},
           {soundBlock(0.3, 0.7, tone), soundBlock(2.5, 0.4, click)}},
          true);
    ASSERT_TRUE(QFile::copy(folder.url("two.mp4").toLocalFile(), folder.url("mix.mp4").toLocalFile()));

    const auto asset = open(folder.url("two.mp4"));
    const auto video = asset->tracks(MediaType::Video);
    const auto audio = asset->tracks(MediaType::Audio);
    ASSERT_EQ(video.size(), 1U);
    ASSERT_EQ(audio.size(), 2U);

    constexpr TrackTransform kUpsideDown{-65536, 0, 0, 0, -65536, 0, 0, 0, 1 << 30};
    const auto reader = services.makeReader(asset);
    auto &packets = reader->addTrackOutput(video[0]);
    auto &mix = reader->addAudioMixOutput(audio, {});
    const auto writer = services.makeWriter(folder.url("one.mov"), MovieFileType::QuickTime);
    auto &videoInput = writer->addPassthroughInput(video[0].formats.at(0), kUpsideDown);
    auto &audioInput = writer->addAudioInput({});
    ASSERT_TRUE(reader->startReading());
    ASSERT_TRUE(writer->startWriting());
    writer->startSession(MediaTime::zero());
    copyAll(packets, videoInput);
    copyAll(mix, audioInput);
    writer->finishWriting().waitForFinished();
    EXPECT_EQ(reader->status(), MovieReader::Status::Completed) << errorText(reader->error()).toStdString();
    ASSERT_EQ(writer->status(), MovieWriter::Status::Completed) << errorText(writer->error()).toStdString();

    EXPECT_TRUE(services.useReadyMix(folder.url("mix.mp4")).result());
    EXPECT_FALSE(services.useReadyMix(folder.url("mix.mp4")).result()) << "it is used";
    EXPECT_FALSE(services.useReadyMix(folder.url("one.mov")).result()) << "it has none";

    const MovieProbe source(folder.url("two.mp4"));
    EXPECT_EQ(source.sounds.size(), 2U);
    EXPECT_EQ(open(folder.url("one.mov"))->tracks(MediaType::Video).at(0).preferredTransform, kUpsideDown);
    for (const auto *name : {"one.mov", "mix.mp4"}) {
        const MovieProbe probe(folder.url(name));
        EXPECT_EQ(probe.duration, source.duration);
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
