#include "capture/SessionCameraManager.h"
#include "support/fakes/Await.h"
#include "support/fakes/FakeDesktop.h"
#include "support/fakes/FakeMovieServices.h"
#include "support/fakes/FakeSources.h"

#include <gtest/gtest.h>

namespace zivra::test {

namespace {

const CaptureDevice kDesk{"desk", "Desk Camera"};
const CaptureDevice kDoor{"door", "Door Camera"};
const CaptureDevice kMicrophone{"mic", "Microphone"};
const QUrl kFile = QUrl::fromLocalFile("/nowhere/take.mov");

struct CameraManagerTest : testing::Test {
    /// Times are in milliseconds.
    void picture(std::int64_t time, const CaptureDevice &camera = kDesk, int height = 720)
    {
        VideoFrame frame;
        frame.width = height * 16 / 9;
        frame.height = height;
        clock.time = MediaTime::fromMilliseconds(time);
        sources.deliver(
            camera.uniqueID,
            {std::make_shared<const VideoFrame>(frame), {clock.time, {}, {}}, FrameStatus::Complete});
        queues.run();
    }
    template <typename Operation>
    QStringList does(Operation operation)
    {
        operation();
        queues.run();
        return sources.takeLog();
    }
    std::optional<QUrl> stopMovie() { return await(manager->stopMovie(), &queues); }
    std::vector<std::int64_t> times()
    {
        std::vector<std::int64_t> all;
        for (const MediaSample &sample : movies.writers.back()->inputs.at(0)->appended) {
            all.push_back(sample.presentationTime().nanoseconds() / 1'000'000);
        }
        return all;
    }

    FakeSources sources;
    FakeMovieServices movies;
    FakeClock clock;
    ManualQueueFactory queues;
    std::unique_ptr<SessionCameraManager> manager = std::make_unique<SessionCameraManager>(
        CameraSession::Services{sources, sources, movies, clock}, queues);
};

using Log = QStringList;

} // namespace

TEST_F(CameraManagerTest, RunsOneCameraAtOnePreset)
{
    EXPECT_EQ(does([&] { manager->start(std::nullopt, VideoQuality::High); }), Log()) << "it has none yet";
    EXPECT_EQ(does([&] { manager->start(kDesk, VideoQuality::Medium); }), Log("+desk 720"));
    EXPECT_EQ(does([&] { manager->start(kDesk, VideoQuality::Medium); }), Log());
    EXPECT_EQ(does([&] { manager->start(std::nullopt, VideoQuality::High); }), Log({"-desk", "+desk 1080"}));
    EXPECT_EQ(does([&] { manager->start(kDoor, VideoQuality::Low); }), Log({"-desk", "+door 480"}));
    EXPECT_EQ(does([&] { manager->stop(); }), Log("-door"));
    EXPECT_EQ(does([&] { manager->start(std::nullopt, VideoQuality::Low); }), Log("+door 480"));

    sources.missing = "none";
    EXPECT_EQ(does([&] { manager->start(CaptureDevice{"none", {}}, VideoQuality::Low); }), Log("-door"));
    sources.broken = "desk";
    EXPECT_EQ(does([&] { manager->start(kDesk, VideoQuality::Low); }), Log({"+desk 480", "-desk"}));
    sources.broken.clear();
    EXPECT_EQ(does([&] { manager->start(kDesk, VideoQuality::Low); }), Log("+desk 480"))
        << "it is tried again";
    EXPECT_EQ(does([&] { sources.unplug("desk"); }), Log("-desk"));
    EXPECT_EQ(does([&] { manager->start(kDesk, VideoQuality::Low); }), Log("+desk 480"));
    EXPECT_EQ(does([&] { manager.reset(); }), Log("-desk"));
}

TEST_F(CameraManagerTest, ShowsTheNewestPictureToWhoWatches)
{
    PicturePreview &preview = manager->preview();
    int told = 0;
    does([&] { manager->start(kDesk, VideoQuality::Medium); });
    picture(1);
    preview.setHandler([&] { ++told; });
    picture(2, kDesk, 480);
    picture(3);
    settle();
    EXPECT_EQ(told, 1);
    EXPECT_EQ(preview.latest()->height, 720);
    does([&] { sources.unplug("desk"); });
    EXPECT_NE(preview.latest(), nullptr) << "the last one stays";
    does([&] { manager->stop(); });
    EXPECT_EQ(preview.latest(), nullptr);
}

TEST_F(CameraManagerTest, RecordsOneMovieAtATime)
{
    EXPECT_EQ(stopMovie(), std::nullopt) << "none is recorded";
    does([&] { manager->start(kDesk, VideoQuality::Medium); });
    EXPECT_EQ(does([&] { manager->startMovie(kMicrophone, kFile); }), Log("+mic"));
    EXPECT_EQ(does([&] {
                  manager->startMovie(kMicrophone, kFile);
                  manager->stop();
              }),
              Log());
    picture(1000);
    EXPECT_EQ(stopMovie(), kFile);
    EXPECT_EQ(sources.takeLog(), Log("-mic"));
    ASSERT_EQ(movies.writers.size(), 1U);
    EXPECT_EQ(movies.writers[0]->type, MovieFileType::QuickTime);

    does([&] { manager->startMovie(std::nullopt, kFile); });
    movies.onWriter = [](WriterRecord &writer) { writer.finishFails = true; };
    picture(6000, kDesk, 480);
    EXPECT_EQ(movies.writers[1]->inputs.size(), 1U);
    EXPECT_EQ(movies.writers[1]->inputs[0]->video->height, 480);
    EXPECT_EQ(stopMovie(), std::nullopt);
    EXPECT_EQ(does([&] { manager->stop(); }), Log("-desk")) << "it had gone on";
}

TEST_F(CameraManagerTest, HoldsThePictureOfACameraThatWasUnpluggedUntilAnotherTakesOver)
{
    does([&] { manager->start(kDesk, VideoQuality::Medium); });
    does([&] { manager->startMovie(std::nullopt, kFile); });
    picture(1000);
    sources.unplug("desk");
    const auto passes = [&](std::int64_t time, std::size_t pictures) {
        clock.time = MediaTime::fromMilliseconds(time);
        settleUntil([&] { return times().size() == pictures; }, &queues);
    };
    passes(2100, 2);
    passes(3200, 3);
    does([&] { manager->start(kDoor, VideoQuality::Low); });
    picture(3400, kDoor, 480);
    clock.time = MediaTime::fromMilliseconds(3900);
    does([&] { manager->pauseMovie(); });
    clock.time = MediaTime::fromMilliseconds(9000);
    does([&] { manager->resumeMovie(); });
    clock.time = MediaTime::fromMilliseconds(9500);
    EXPECT_EQ(stopMovie(), kFile);
    EXPECT_EQ(times(), (std::vector<std::int64_t>{1000, 2100, 3200, 3400, 3900, 4400}));
}

} // namespace zivra::test
