#include "overlays/BubbleModel.h"
#include "overlays/PictureConversion.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace zivra::test {
namespace {

constexpr QRectF kScreen(100, 0, 1820, 1050); ///< without the desktop's bars

TEST(Bubble, GoesWhereItWasLastOrToItsCorner)
{
    const std::optional<QRectF> none;
    BubbleModel model;
    model.set(BubbleSize::Medium, true, false);
    const QRectF byDefault(184, 786, 240, 240);
    EXPECT_EQ(model.frameOn(kScreen, none, none), byDefault);
    EXPECT_EQ(model.frameOn(kScreen, none, QRectF(1800, 300, 240, 240)), QRectF(1800, 300, 240, 240))
        << "it may hang over the edge";
    EXPECT_EQ(model.frameOn(kScreen, none, QRectF(2000, 300, 240, 240)), byDefault) << "another screen";
    EXPECT_EQ(model.frameOn(kScreen, none, QRectF(500, 900, 240, 240)), byDefault) << "its corner is below";
    model.setSize(BubbleSize::Large);
    EXPECT_EQ(model.frameOn(kScreen, QRectF(500, 500, 240, 240), byDefault), QRectF(500, 380, 360, 360))
        << "grows upwards and to the right from where it is";
    model.set(BubbleSize::Large, true, true);
    EXPECT_EQ(model.frameOn(kScreen, QRectF(500, 500, 240, 240), none), QRectF(640, 312.5, 740, 425));
}

TEST(Bubble, FillsItsShapeWithTheMiddleOfThePictureAndMirrorsIt)
{
    constexpr int kWidth = 64;
    constexpr int kHeight = 32;
    // Black, then white from the right edge of the middle's left half on; no colour.
    auto bytes = std::make_shared<std::vector<std::uint8_t>>(kWidth * kHeight * 3 / 2, 128);
    for (int place = 0; place < kWidth * kHeight; ++place) {
        (*bytes)[static_cast<std::size_t>(place)] = place % kWidth < kWidth / 2 ? 16 : 235;
    }
    const std::uint8_t *luma = bytes->data();
    const std::uint8_t *chroma = luma + kWidth * kHeight;
    const VideoFrame frame{
        kWidth,
        kHeight,
        {{{luma, kWidth}, {chroma, kWidth / 2}, {chroma + kWidth * kHeight / 4, kWidth / 2}}},
        bytes,
        0,
        std::nullopt};
    QImage mask(16, 16, QImage::Format_Alpha8);
    mask.fill(255);
    mask.scanLine(0)[0] = 0;
    mask.scanLine(0)[15] = 128;
    const QImage plain = convertPicture(frame, mask, false);
    EXPECT_LT(qGray(plain.pixel(3, 8)), 10);
    EXPECT_GT(qGray(plain.pixel(12, 8)), 245);
    EXPECT_EQ(plain.pixelColor(0, 0).alpha(), 0);
    EXPECT_EQ(plain.pixelColor(15, 0).alpha(), 128);
    const QImage mirrored = convertPicture(frame, mask, true);
    EXPECT_GT(qGray(mirrored.pixel(3, 8)), 245);
    EXPECT_LT(qGray(mirrored.pixel(12, 8)), 10);
    EXPECT_EQ(mirrored.pixelColor(0, 0).alpha(), 0) << "the shape is not mirrored";
}

} // namespace
} // namespace zivra::test
