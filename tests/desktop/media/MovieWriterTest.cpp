#include "desktop/media/FFmpegMovieServices.h"
#include "desktop/media/MovieProbe.h"
#include "desktop/media/TestMovie.h"
#include "platform/PlatformError.h"

#include <QFile>

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <new>
#include <set>
#include <thread>

namespace zivra::test {

using desktop::FFmpegMovieServices;

namespace {

/// Real-time writing at the pace of the clock until `seconds`: pictures 30 times a second, sound in
/// blocks of 100 ms with a click each second. Tells in `taken` how many pictures went in.
void writeLive(MovieWriter &writer, double seconds, std::atomic<int> &taken)
{
    auto &video = writer.addVideoInput(videoSettings());
    auto &audio = writer.addAudioInput({});
    video.setExpectsMediaDataInRealTime(true);
    audio.setExpectsMediaDataInRealTime(true);
    ASSERT_TRUE(writer.startWriting()) << errorText(writer.error()).toStdString();
    writer.startSession(kSessionStart);
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < int(seconds * 30); ++i) {
        if (video.append(numberedFrame(i, i / 30.0))) {
            taken = i + 1;
        }
        if (i % 3 == 0) {
            audio.append(soundBlock(i / 30.0, 0.1, {.toneLevel = 0.1F, .clicks = {1, 2, 3}}));
        }
        std::this_thread::sleep_until(start + std::chrono::milliseconds(i * 1000 / 30));
    }
}

} // namespace

class MovieWriterFileType : public testing::TestWithParam<std::tuple<MovieFileType, VideoCodec>> {};

TEST_P(MovieWriterFileType, KeepsPicturesSoundAndColoursInTheirPlaces)
{
    const auto [type, codec] = GetParam();
    const MovieFolder folder;
    const auto url = folder.url("movie");
    const auto writer = FFmpegMovieServices().makeWriter(url, type);
    auto &video = writer->addVideoInput(videoSettings(codec));
    auto &audio = writer->addAudioInput({});
    ASSERT_TRUE(writer->startWriting());
    writer->startSession(kSessionStart);
    std::vector<double> times;
    for (int i = 0; i < 90; ++i) {
        times.push_back(i / 30.0 + (i % 3 == 1 ? 0.007 : 0));                       // an uneven pace
        video.append(numberedFrame(i, times.back(), i > 45 ? 2 * kWidth : kWidth)); // fitted in
        if (i % 3 == 0) {
            audio.append(soundBlock(i / 30.0, 0.1, {.clicks = {0.01, 0.5, 2.5}}));
        }
    }
    video.markAsFinished();
    EXPECT_FALSE(video.append(numberedFrame(99, 4)));
    writer->finishWriting().waitForFinished();
    ASSERT_EQ(writer->status(), MovieWriter::Status::Completed) << errorText(writer->error()).toStdString();

    EXPECT_FALSE(FFmpegMovieServices().completeInterrupted(url).result()) << "not an ordinary file";
    const MovieProbe probe(url);
    ASSERT_EQ(probe.pictures.size(), times.size());
    for (std::size_t i = 0; i < times.size(); ++i) {
        EXPECT_EQ(probe.pictures[i].number, int(i));
        EXPECT_NEAR(probe.pictures[i].time, times[i], 0.00002);
    }
    EXPECT_NEAR(probe.duration, 3, 0.01);
    EXPECT_EQ(probe.videoTag,
              QByteArray(codec == VideoCodec::Hevc ? "hvc1" : "avc1") + ",tv,smpte170m,iec61966-2-1,bt709");
    probe.sounds.at(0).expectClicks({0.01, 0.5, 2.5});
}

INSTANTIATE_TEST_SUITE_P(All, MovieWriterFileType,
                         testing::Combine(testing::Values(MovieFileType::Mpeg4, MovieFileType::QuickTime),
                                          testing::Values(VideoCodec::H264, VideoCodec::Hevc)));

/// Sound at any time, in any format: late, before the start, with a gap and an overlap.
TEST(MovieWriter, PutsEverySoundWhereItBelongs)
{
    const MovieFolder folder;
    const auto writer = FFmpegMovieServices().makeWriter(folder.url("movie.mp4"), MovieFileType::Mpeg4);
    auto &early = writer->addAudioInput({});
    auto &late = writer->addAudioInput({});
    early.setExpectsMediaDataInRealTime(true);
    late.setExpectsMediaDataInRealTime(true);
    ASSERT_TRUE(writer->startWriting());
    writer->startSession(kSessionStart);
    const SoundOptions stereo{.clicks = {0.01, 1.0, 1.45}};
    early.append(soundBlock(-0.3, 0.2, stereo));
    early.append(soundBlock(-0.1, 0.3, stereo));        // its first third lies before the start
    early.append(soundBlock(0.2 + 0.004, 0.2, stereo)); // a deviation that does not matter
    early.append(soundBlock(0.9, 0.2, stereo));         // after a gap
    early.append(soundBlock(1.0, 0.5, stereo));         // overlaps by 100 ms
    const SoundOptions mono{.format = {.sampleRate = 44100, .channels = 1}, .clicks = {0.75, 1.2, 1.4}};
    late.append(soundBlock(0.7, 0.3, mono));
    late.append(soundBlock(1.0, 0.5, mono));
    writer->finishWriting().waitForFinished();
    ASSERT_EQ(writer->status(), MovieWriter::Status::Completed);

    const MovieProbe probe(folder.url("movie.mp4"));
    ASSERT_EQ(probe.sounds.size(), 2U);
    probe.sounds[0].expectClicks(stereo.clicks);
    probe.sounds[1].expectClicks(mono.clicks);
    EXPECT_NEAR(probe.sounds[0].end(), 1.5, 0.03);
    EXPECT_NEAR(probe.sounds[1].end(), 1.5, 0.03);
}

TEST(MovieWriter, SurvivesTheEndOfTheProcess)
{
    void *shared =
        mmap(nullptr, sizeof(std::atomic<int>), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(shared, MAP_FAILED);
    for (const auto type : {MovieFileType::Mpeg4, MovieFileType::QuickTime}) {
        const MovieFolder folder;
        const auto url = folder.url("movie");
        auto &taken = *new (shared) std::atomic<int>(0);
        const pid_t child = fork();
        if (child == 0) {
            const auto writer = FFmpegMovieServices().makeWriter(url, type);
            writeLive(*writer, 30, taken);
            _exit(0);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(3900));
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);

        const MovieProbe probe(url);
        ASSERT_FALSE(probe.pictures.empty());
        const double lost = 1.3; // seconds: a flush interval and what a busy machine adds
        EXPECT_GT(probe.pictures.back().time, taken / 30.0 - lost);
        EXPECT_GT(probe.sounds.at(0).end(), taken / 30.0 - lost);
        EXPECT_NEAR(probe.sounds[0].clicks().at(0), 1, 0.001);
        for (const auto &picture : probe.pictures) {
            EXPECT_NEAR(picture.time, picture.number / 30.0, 0.0001);
        }

        FFmpegMovieServices services;
        EXPECT_TRUE(services.completeInterrupted(url).result());
        EXPECT_FALSE(services.completeInterrupted(url).result()) << "it is an ordinary one now";
        const MovieProbe completed(url);
        EXPECT_EQ(completed.pictures.size(), probe.pictures.size());
        EXPECT_EQ(completed.sounds.at(0).samples.size(), probe.sounds[0].samples.size());
        completed.sounds[0].expectClicks(probe.sounds[0].clicks());
    }
}

/// Nothing changes on the screen for seconds: what there is gets to the disk all the
/// same, and the next picture keeps its time. An unfinished writer can be dropped at any moment.
TEST(MovieWriter, FlushesAStillScreen)
{
    const MovieFolder folder;
    const auto url = folder.url("movie.mov");
    {
        const auto writer = FFmpegMovieServices().makeWriter(url, MovieFileType::QuickTime);
        auto &video = writer->addVideoInput(videoSettings());
        video.setExpectsMediaDataInRealTime(true);
        ASSERT_TRUE(writer->startWriting());
        writer->startSession(kSessionStart);
        video.append(numberedFrame(1, 0));
        std::this_thread::sleep_for(std::chrono::milliseconds(1500));
        EXPECT_EQ(MovieProbe(url).pictures.size(), 1U);
        EXPECT_FALSE(FFmpegMovieServices().completeInterrupted(url).result()) << "it is being written";
        video.append(numberedFrame(2, 1.5));
        video.append(numberedFrame(3, 1.6));
        std::this_thread::sleep_for(std::chrono::milliseconds(1300));
        video.append(numberedFrame(4, 2.9));
    }
    const MovieProbe probe(url);
    ASSERT_GE(probe.pictures.size(), 3U);
    EXPECT_NEAR(probe.pictures[1].time, 1.5, 0.001);
    EXPECT_NEAR(probe.pictures[2].time, 1.6, 0.001);

    // A trim within the still stretch starts with the picture that is on the screen then.
    FFmpegMovieServices services;
    const auto asset = services.openAsset(url).result();
    const MediaTimeRange range{MediaTime::fromSeconds(1.2), MediaTime::fromSeconds(0.35)};
    services.exportPassthrough(asset, range, folder.url("trim.mov"), MovieFileType::QuickTime)
        .waitForFinished();
    const MovieProbe trim(folder.url("trim.mov"));
    ASSERT_EQ(trim.pictures.size(), 2U);
    EXPECT_EQ(trim.pictures[0].number, 1);
    EXPECT_NEAR(trim.pictures[1].time, 0.3, 0.001);
}

TEST(MovieWriter, RepeatsAStillPictureForNothing)
{
    const MovieFolder folder;
    const auto url = folder.url("movie.mp4");
    const auto writer = FFmpegMovieServices().makeWriter(url, MovieFileType::Mpeg4);
    auto &video = writer->addVideoInput(videoSettings());
    ASSERT_TRUE(writer->startWriting());
    writer->startSession(kSessionStart);
    // Changes in the midst of still stretches, right behind a key frame (each 60th picture), and two in a
    // row.
    const std::set<int> changes{0, 5, 40, 61, 62, 100};
    std::vector<int> shown;
    for (int i = 0; i < 150; ++i) {
        shown.push_back(changes.contains(i) ? i : shown.back());
        VideoFrame frame = *numberedFrame(shown.back(), 0).videoFrame();
        frame.number = static_cast<std::uint64_t>(i) + 1;
        if (shown.back() != i) {
            frame.changed.emplace();
        }
        const MediaTime time = kSessionStart + MediaTime::fromSeconds(i / 5.0);
        video.append({std::make_shared<const VideoFrame>(frame), {time, {}, {}}, FrameStatus::Complete});
    }
    writer->finishWriting().waitForFinished();
    EXPECT_LT(QFile(url.toLocalFile()).size(), 20'000);

    const MovieProbe probe(url);
    ASSERT_EQ(probe.pictures.size(), shown.size());
    for (std::size_t i = 0; i < shown.size(); ++i) {
        EXPECT_EQ(probe.pictures[i].number, shown[i]) << "picture " << i;
    }
}

TEST(MovieWriter, SaysWhyAFileCannotBeMade)
{
    const MovieFolder folder;
    const auto errorFor = [](const QUrl &target) {
        const auto writer = FFmpegMovieServices().makeWriter(target, MovieFileType::Mpeg4);
        writer->addVideoInput(videoSettings());
        EXPECT_FALSE(writer->startWriting());
        return errorText(writer->error());
    };
    QFile existing(folder.url("movie.mp4").toLocalFile());
    ASSERT_TRUE(existing.open(QIODevice::ReadWrite));
    existing.write("mine");
    existing.flush();
    EXPECT_TRUE(errorFor(folder.url("movie.mp4")).contains(QStringLiteral("“movie.mp4” already exists")));
    EXPECT_EQ(existing.size(), 4);
    EXPECT_TRUE(errorFor(folder.url("none/movie.mp4")).contains(QStringLiteral("No such file or directory")));
}

/// A limit on the size of files stands in for a full disk: writes fail in the middle in the same way.
TEST(MovieWriter, FinishesWithWhatFitsOnAFullDisk)
{
    const MovieFolder folder;
    const auto url = folder.url("movie.mp4");
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit unlimited{};
    getrlimit(RLIMIT_FSIZE, &unlimited);
    const rlimit limit{50'000, unlimited.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
    const auto writer = FFmpegMovieServices().makeWriter(url, MovieFileType::Mpeg4);
    std::atomic<int> interruptions = 0;
    writer->setInterruptionHandler([&](const std::exception_ptr &) { ++interruptions; });
    std::atomic<int> taken = 0;
    writeLive(*writer, 5, taken);
    EXPECT_EQ(writer->status(), MovieWriter::Status::Writing);
    writer->finishWriting().waitForFinished();
    setrlimit(RLIMIT_FSIZE, &unlimited);
    EXPECT_EQ(writer->status(), MovieWriter::Status::Completed);

    const MovieProbe probe(url);
    ASSERT_FALSE(probe.pictures.empty());
    EXPECT_LT(probe.pictures.back().time, 4.9);
    EXPECT_GT(probe.sounds.at(0).end(), 0.5);
    EXPECT_EQ(interruptions, 1);
}

} // namespace zivra::test
