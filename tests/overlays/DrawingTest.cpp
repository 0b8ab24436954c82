#include "overlays/DrawingModel.h"
#include "overlays/StrokePainter.h"
#include "support/fakes/FakeDesktop.h"

#include <gtest/gtest.h>

namespace zivra::test {
namespace {

struct Drawing : testing::Test {
    void stroke(std::initializer_list<QPointF> points)
    {
        model.begin(*points.begin());
        for (const QPointF &point : points) {
            model.extend(point);
        }
        model.end();
    }
    double opacityAfter(int milliseconds)
    {
        const auto &last = model.strokes().back();
        return last.opacity(*last.endedAt + MediaTime::fromMilliseconds(milliseconds));
    }
    QColor at(const StrokePainter::Painted &stroke, int x, int y)
    {
        for (const auto &[tile, picture] : stroke.tiles) {
            const QRect rect = painter.rectOf(tile);
            if (rect.contains(x, y)) {
                return picture.pixelColor(QPoint(x, y) - rect.topLeft());
            }
        }
        return Qt::transparent;
    }
    QRegion takeFresh()
    {
        QRegion region;
        for (const int tile : painter.strokes().back().fresh) {
            region += painter.rectOf(tile);
        }
        painter.forgetFresh();
        return region;
    }

    FakeClock clock;
    DrawingModel model{clock};
    StrokePainter painter;
};

TEST_F(Drawing, StrokesStaySolidThenFadeAndGoEachInItsOwnTime)
{
    EXPECT_FALSE(model.isPruning());
    model.extend({1, 1});
    model.end();
    EXPECT_TRUE(model.strokes().empty()) << "nothing to extend or end";

    model.begin({10, 10});
    clock.advance(60'000);
    EXPECT_EQ(model.strokes().front().opacity(clock.now()), 1) << "under the pen";
    model.setColor(kBlue);
    EXPECT_EQ(model.strokes().front().color, kRed) << "a colour is for the next stroke";
    model.end();
    for (const auto &[age, opacity] :
         {std::pair(0, 1.0), {3000, 1.0}, {3250, 0.75}, {3500, 0.5}, {4000, 0.0}}) {
        EXPECT_NEAR(opacityAfter(age), opacity, 1e-9) << age;
    }
    clock.advance(2000);
    stroke({{5, 5}});
    EXPECT_EQ(model.strokes().back().points.size(), 2) << "a tap is a dot";
    clock.advance(2000);
    model.prune();
    EXPECT_EQ(model.strokes().size(), 2) << "four seconds are not more than four";
    clock.advance(1);
    model.prune();
    ASSERT_EQ(model.strokes().size(), 1);
    EXPECT_EQ(model.strokes().front().color, kBlue);
    EXPECT_TRUE(model.isPruning());
    clock.advance(2000);
    model.prune();
    EXPECT_FALSE(model.isPruning());
}

TEST_F(Drawing, StrokesArePaintedPieceByPieceIntoTiles)
{
    const auto paint = [&] { return painter.paint(model.strokes(), clock.now()); };
    painter.reset({480, 350}, 1);
    model.begin({20, 20});
    model.extend({100, 100});
    EXPECT_TRUE(paint());
    EXPECT_EQ(takeFresh(), QRegion(0, 0, 120, 120));
    EXPECT_FALSE(paint()) << "nothing has happened";
    model.extend({200, 100});
    EXPECT_TRUE(paint());
    EXPECT_EQ(takeFresh(), QRegion(60, 60, 180, 60));
    for (const int x : {100, 119, 120, 200}) {
        EXPECT_EQ(at(painter.strokes().front(), x, 100), kRed) << "where pieces and tiles meet: " << x;
    }
    model.end();
    model.setColor(kGreen);
    clock.advance(1000);
    stroke({{60, 10}, {60, 340}});
    EXPECT_TRUE(paint());
    EXPECT_EQ(takeFresh(), QRegion(0, 0, 120, 350)) << "the lowest tiles end with the screen";

    clock.advance(2500);
    EXPECT_TRUE(paint());
    EXPECT_NEAR(painter.strokes().front().opacity, 0.5, 0.01);
    EXPECT_EQ(painter.strokes().back().opacity, 1);
    EXPECT_EQ(at(painter.strokes().back(), 60, 60), kGreen);
    EXPECT_TRUE(takeFresh().isEmpty()) << "fading paints nothing";
    model.clear();
    EXPECT_TRUE(paint());
    EXPECT_TRUE(painter.strokes().empty());
}

} // namespace
} // namespace zivra::test
