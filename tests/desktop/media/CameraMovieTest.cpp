#include "capture/SessionCameraManager.h"
#include "desktop/media/FFmpegMovieServices.h"
#include "desktop/media/MovieProbe.h"
#include "desktop/media/TestMovie.h"
#include "desktop/threads/ThreadSerialQueue.h"
#include "support/Eventually.h"
#include "support/fakes/Await.h"
#include "support/fakes/FakeSources.h"

#include <gtest/gtest.h>

#include <atomic>

namespace zivra::desktop::test {

using namespace zivra::test;

struct SharedClock final : MediaClock {
    std::atomic<std::int64_t> nanoseconds = 0;
    [[nodiscard]] MediaTime now() const override { return MediaTime::fromNanoseconds(nanoseconds); }
};

/// Thirty numbered pictures a second, and sound that comes 25 ms after them with a click at each whole
/// second.
TEST(CameraMovie, KeepsPictureAndSoundTogetherThroughPausesAndTheLossOfTheCamera)
{
    const MovieFolder folder;
    const QUrl url = folder.url("take.mov");
    FakeSources sources;
    FFmpegMovieServices movies;
    SharedClock clock;
    ThreadSerialQueueFactory queues;
    SessionCameraManager manager({sources, sources, movies, clock}, queues);
    manager.start(CaptureDevice{"camera", {}}, VideoQuality::Medium);
    manager.startMovie(CaptureDevice{"mic", {}}, url);
    ASSERT_EQ(await(manager.stopMovie()), std::nullopt) << "no picture came";
    manager.startMovie(CaptureDevice{"mic", {}}, url);
    ASSERT_TRUE(eventually([&] { return sources.isOpen("camera") && sources.isOpen("mic"); }));

    constexpr int kPerSecond = 30;
    constexpr double kLag = 0.025;
    for (int number = 0; number < 8 * kPerSecond; ++number) {
        const double time = number / double(kPerSecond);
        clock.nanoseconds = (kSessionStart + MediaTime::fromSeconds(time + kLag)).nanoseconds();
        if (number == 2 * kPerSecond || number == 4 * kPerSecond + 7) {
            manager.pauseMovie();
        } else if (number == 3 * kPerSecond || number == 4 * kPerSecond + 22) {
            manager.resumeMovie();
        } else if (number == 7 * kPerSecond) {
            sources.unplug("camera");
        }
        sources.deliver("camera", numberedFrame(number, time));
        sources.deliver("mic",
                        soundBlock(time - kLag, 1.0 / kPerSecond, {.clicks = {1, 2.5, 3.5, 5, 6, 7.5}}));
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    ASSERT_EQ(await(manager.stopMovie()), url);

    const MovieProbe probe(url);
    EXPECT_TRUE(probe.videoTag.startsWith("avc1"));
    EXPECT_NEAR(probe.duration, 6.5, 0.05) << "eight seconds without the pauses";
    ASSERT_EQ(probe.sounds.size(), 1U);
    // Wherever a picture lies in the file, what was heard at that moment lies there too.
    const auto placeOf = [&](int number) {
        const auto found = std::ranges::find(probe.pictures, number, &MovieProbe::Picture::number);
        return found != probe.pictures.end() ? found->time : -1;
    };
    const std::vector<double> clicks = probe.sounds[0].clicks();
    const std::vector<int> heardWith{30, 105, 150, 180};
    ASSERT_EQ(clicks.size(), heardWith.size() + 1) << "that of the first pause is cut out";
    for (std::size_t i = 0; i < heardWith.size(); ++i) {
        EXPECT_NEAR(clicks[i], placeOf(heardWith[i]), 0.01);
    }
    double longest = 0;
    for (std::size_t i = 1; i < probe.pictures.size() && probe.pictures[i].time < 5.4; ++i) {
        longest = std::max(longest, probe.pictures[i].time - probe.pictures[i - 1].time);
    }
    EXPECT_LT(longest, 0.05) << "no gap";
    EXPECT_EQ(probe.pictures.back().number, 7 * kPerSecond - 1);
    EXPECT_GT(probe.pictures.back().time, 6.4) << "the last picture is held to the end";
}

} // namespace zivra::desktop::test
