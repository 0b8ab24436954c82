#include "overlays/CameraPicture.h"
#include "overlays/DrawingCanvas.h"
#include "support/Eventually.h"
#include "support/fakes/FakeDesktop.h"

#include <QGuiApplication>
#include <QQuickWindow>
#include <QSGRendererInterface>

#include <gtest/gtest.h>

namespace zivra::test {
namespace {

struct OnePicture final : PicturePreview {
    void show(bool isThere)
    {
        picture.reset();
        if (isThere) {
            // A white one.
            const auto bytes = std::make_shared<std::vector<std::uint8_t>>(64 * 64, 235);
            const auto grey = std::make_shared<std::vector<std::uint8_t>>(32 * 32, 128);
            auto frame = std::make_shared<VideoFrame>();
            frame->width = frame->height = 64;
            frame->planes = {{{bytes->data(), 64}, {grey->data(), 32}, {grey->data(), 32}}};
            frame->storage = std::make_shared<std::pair<decltype(bytes), decltype(grey)>>(bytes, grey);
            picture = frame;
        }
    }
    [[nodiscard]] std::shared_ptr<const VideoFrame> latest() const override { return picture; }
    void setHandler(std::function<void()> /*handler*/) override {}

    std::shared_ptr<const VideoFrame> picture;
};

TEST(Views, ShowNoPictureOfACameraThatHasGone)
{
    QQuickWindow window;
    window.setColor(Qt::red);
    window.resize(64, 64);
    CameraPicture view;
    view.setParentItem(window.contentItem());
    view.setSize({64, 64});
    window.show();
    OnePicture preview;
    const auto colourShowing = [&](bool isThere) {
        preview.show(isThere);
        view.setPreview(&preview);
        return window.grabWindow().pixelColor(32, 32);
    };
    EXPECT_EQ(colourShowing(true), QColor(Qt::white));
    EXPECT_EQ(colourShowing(false), QColor(Qt::red));
    EXPECT_EQ(colourShowing(true), QColor(Qt::white));
    view.setPreview(nullptr);
}

TEST(Views, TellWhatOfTheSheetIsSeenWhereWindowsCannotBeBlended)
{
    FakeClock clock;
    DrawingModel model(clock);
    QQuickWindow window;
    window.resize(300, 200);
    DrawingCanvas canvas(model);
    canvas.setParentItem(window.contentItem());
    canvas.setSize({300, 200});
    window.show();
    const auto draw = [&](double y) {
        model.begin({20, y});
        model.extend({200, y});
        model.end();
        return eventually([&] { return canvas.visibleRegion().contains(QPoint(100, static_cast<int>(y))); });
    };
    EXPECT_TRUE(draw(50));
    EXPECT_FALSE(canvas.visibleRegion().contains(QPoint(100, 60))) << "beside the stroke";
    clock.advance(3400);
    EXPECT_TRUE(draw(150));
    EXPECT_TRUE(canvas.visibleRegion().contains(QPoint(100, 50))) << "it is still the stronger part";
    clock.advance(300);
    EXPECT_TRUE(draw(100));
    EXPECT_FALSE(canvas.visibleRegion().contains(QPoint(100, 50)));
}

} // namespace
} // namespace zivra::test

int main(int argc, char **argv)
{
    testing::InitGoogleTest(&argc, argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    return RUN_ALL_TESTS();
}
