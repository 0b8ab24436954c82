#include "desktop/camera/PipeWireCameras.h"

#include "desktop/camera/PrivatePipeWire.h"
#include "desktop/camera/RawPictures.h"
#include "desktop/camera/SharedCamera.h"

#include <QDir>

#include <unistd.h>

#include <atomic>
#include <optional>

namespace zivra::desktop::test {

namespace {

struct Format {
    CameraPixels pixels;
    std::uint32_t subtype;
    std::uint32_t format;
};

constexpr std::array<Format, 4> kFormats{
    {{CameraPixels::Yuyv, SPA_MEDIA_SUBTYPE_raw, SPA_VIDEO_FORMAT_YUY2},
     {CameraPixels::Nv12, SPA_MEDIA_SUBTYPE_raw, SPA_VIDEO_FORMAT_NV12},
     {CameraPixels::Bgrx, SPA_MEDIA_SUBTYPE_raw, SPA_VIDEO_FORMAT_BGRx},
     {CameraPixels::Mjpeg, SPA_MEDIA_SUBTYPE_mjpg, SPA_VIDEO_FORMAT_UNKNOWN}}};
const CaptureDevice kDevice{"pipewire:shared", "Shared Camera"};

// A sanitizer holds back what is freed, and finds leaks itself.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kCountsPages = false;
#else
constexpr bool kCountsPages = true;
#endif

struct Holdings {
    qsizetype files = QDir("/proc/self/fd").count();
    qsizetype pages = shell(QStringLiteral("cat /proc/%1/statm").arg(getpid())).split(' ').value(1).toInt();
};

} // namespace

TEST(PipeWireCameras, ComeSendAndGo)
{
    const PrivatePipeWire server;
    PipeWireCameras cameras;
    EXPECT_TRUE(cameras.cameras().empty());
    int changes = 0;
    cameras.setChangeHandler([&] { ++changes; });
    const auto lists = [&](const std::vector<CaptureDevice> &expected) {
        return eventually([&] { return cameras.cameras() == expected; });
    };
    // The last ones show that nothing is left of the others.
    constexpr int kCycles = 50;
    std::optional<Holdings> atFirst;
    for (int cycle = 0; cycle < kCycles; ++cycle) {
        const Format &format = kFormats.at(static_cast<std::size_t>(cycle) % 4);
        const QSize size = cycle % 8 < 4 ? QSize(1280, 720) : QSize(320, 240); // some can't do what is wished
        std::optional<SharedCamera> camera;
        camera.emplace("shared", format.subtype, format.format, size, greenPicture(format.pixels, size));
        ASSERT_TRUE(lists({kDevice}));
        const auto source = cameras.makeSource(kDevice.uniqueID, {1280, 720});
        std::atomic<int> pictures = 0;
        std::atomic<bool> isRight = true;
        std::atomic<int> ends = 0;
        ASSERT_TRUE(source
                        ->start(
                            [&](const MediaSample &sample) {
                                ++pictures;
                                isRight = isRight && isGreen(*sample.videoFrame(), size);
                            },
                            [&](const std::exception_ptr &) { ++ends; })
                        .isFinished());
        ASSERT_TRUE(eventually([&] { return pictures >= 3; })) << cycle;
        EXPECT_TRUE(isRight) << cycle;
        camera.reset();
        ASSERT_TRUE(eventually([&] { return ends == 1; })) << cycle;
        ASSERT_TRUE(lists({}));
        if (cycle == 9) {
            atFirst.emplace();
        }
    }
    EXPECT_LE(Holdings().files, atFirst->files);
    if (kCountsPages) {
        EXPECT_LE(Holdings().pages, atFirst->pages + 1000)
            << "4 MiB, where a cycle's pictures alone take more";
    }
    EXPECT_GE(changes, 2 * kCycles);
}

} // namespace zivra::desktop::test
