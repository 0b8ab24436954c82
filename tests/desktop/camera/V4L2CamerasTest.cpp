#include "desktop/camera/V4L2Cameras.h"

#include "desktop/camera/FakeV4L2.h"
#include "desktop/camera/RawPictures.h"
#include "support/Eventually.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace zivra::desktop::test {

namespace {

const QString kPath = QStringLiteral("/dev/video0");
const CaptureDevice kDevice{"v4l2:Desk Camera@usb-1", "Desk Camera"};

/// What came of a source.
struct Reception {
    std::atomic<int> pictures = 0;
    std::atomic<int> right = 0;
    std::atomic<int> ends = 0;

    QFuture<void> from(CaptureSource &source, QSize size)
    {
        return source.start(
            [this, size](const MediaSample &sample) {
                right += isGreen(*sample.videoFrame(), size) ? 1 : 0;
                ++pictures;
            },
            [this](const std::exception_ptr &) { ++ends; });
    }
};

struct V4L2CamerasTest : testing::Test {
    std::shared_ptr<FakeV4L2> kernel = std::make_shared<FakeV4L2>();
    QTemporaryDir folder;
};

} // namespace

TEST_F(V4L2CamerasTest, DeliverInTheBestMode)
{
    struct Case {
        std::vector<FakeV4L2::Mode> modes;
        std::uint32_t fourcc;
        QSize size;
    };
    const std::uint32_t yuyv = V4L2_PIX_FMT_YUYV;
    const std::uint32_t mjpeg = V4L2_PIX_FMT_MJPEG;
    const std::uint32_t nv12 = V4L2_PIX_FMT_NV12;
    const std::vector<Case> cases{
        {{{yuyv, 640, 480, 30}, {yuyv, 1280, 720, 10}, {mjpeg, 640, 480, 30}, {mjpeg, 1280, 720, 30}},
         mjpeg,
         {1280, 720}},
        {{{mjpeg, 1280, 720, 60}, {nv12, 1280, 720, 30}}, nv12, {1280, 720}},
        {{{yuyv, 640, 480, 30}, {yuyv, 1600, 1200, 5}, {yuyv, 800, 600, 25}, {yuyv, 4000, 3000, 30}},
         yuyv,
         {800, 600}},
    };
    for (const Case &expected : cases) {
        kernel->setCameras({{kPath, {.modes = expected.modes}}});
        const auto pixels = expected.fourcc == mjpeg  ? CameraPixels::Mjpeg
                            : expected.fourcc == nv12 ? CameraPixels::Nv12
                                                      : CameraPixels::Yuyv;
        kernel->picture = greenPicture(pixels, expected.size);
        V4L2Cameras cameras(kernel, folder.path());
        ASSERT_EQ(cameras.cameras(), std::vector{kDevice});
        Reception reception;
        const auto source = cameras.makeSource(kDevice.uniqueID, {1280, 720});
        reception.from(*source, expected.size).waitForFinished();
        ASSERT_TRUE(eventually([&] { return reception.pictures >= 6; })) << "each buffer is used again";
        source->stop().waitForFinished();
        EXPECT_EQ(reception.right, reception.pictures);
        EXPECT_EQ(kernel->format.pixelformat, expected.fourcc);
        EXPECT_EQ(reception.ends + kernel->opened + kernel->mapped, 0) << "nothing is held any more";
    }
}

TEST_F(V4L2CamerasTest, LeaveOutWhatIsDamaged)
{
    kernel->setCameras({{kPath, {.modes = {{V4L2_PIX_FMT_MJPEG, 640, 480, 30}}}}});
    kernel->picture = greenPicture(CameraPixels::Mjpeg, {640, 480});
    kernel->picture.resize(kernel->picture.size() / 2);
    V4L2Cameras cameras(kernel, folder.path());
    Reception reception;
    const auto source = cameras.makeSource(kDevice.uniqueID, {640, 480});
    reception.from(*source, {640, 480}).waitForFinished();
    EXPECT_FALSE(eventually([&] { return reception.pictures > 0; }, std::chrono::milliseconds(200)));
}

TEST_F(V4L2CamerasTest, ComeAndGo)
{
    using Cameras = std::map<QString, FakeV4L2::Camera>;
    const Cameras useless{
        {"/dev/video1", {.card = "Its data", .capabilities = V4L2_CAP_META_CAPTURE | V4L2_CAP_STREAMING}},
        {"/dev/video2", {.card = "Infrared", .modes = {{V4L2_PIX_FMT_GREY, 640, 480, 30}}}}};
    Cameras all = useless;
    all[kPath] = {.modes = {{V4L2_PIX_FMT_YUYV, 640, 480, 30}}};
    kernel->setCameras(all);
    kernel->picture = greenPicture(CameraPixels::Yuyv, {640, 480});
    V4L2Cameras cameras(kernel, folder.path());
    int changes = 0;
    cameras.setChangeHandler([&] { ++changes; });
    ASSERT_EQ(cameras.cameras(), std::vector{kDevice});
    EXPECT_TRUE(eventually([&] { return changes == 1; }));

    Reception reception;
    const auto source = cameras.makeSource(kDevice.uniqueID, {640, 480});
    reception.from(*source, {640, 480}).waitForFinished();
    ASSERT_TRUE(eventually([&] { return reception.pictures > 0; }));
    kernel->isUnplugged = true;
    EXPECT_TRUE(eventually([&] { return reception.ends == 1; }));
    source->stop().waitForFinished();

    kernel->setCameras(useless);
    QFile file(folder.filePath("video0"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_TRUE(eventually([&] { return changes == 2 && cameras.cameras().empty(); }));
    Reception nothing;
    EXPECT_ANY_THROW(
        nothing.from(*cameras.makeSource(kDevice.uniqueID, {640, 480}), {640, 480}).waitForFinished());

    kernel->isBusy = true;
    kernel->setCameras(all);
    ASSERT_TRUE(file.remove());
    EXPECT_TRUE(eventually([&] { return cameras.cameras() == std::vector{kDevice}; }));
    const auto busy = cameras.makeSource(kDevice.uniqueID, {640, 480});
    EXPECT_ANY_THROW(nothing.from(*busy, {640, 480}).waitForFinished());
}

} // namespace zivra::desktop::test
