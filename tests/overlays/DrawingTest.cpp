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
    /// The same strokes painted in one go.
    QImage paintedAnew()
    {
        StrokePainter other;
        other.reset({480, 360}, 1);
        static_cast<void>(other.paint(model.strokes(), clock.now()));
        return other.picture();
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

TEST_F(Drawing, OnlyWhatChangedIsPaintedAndTheResultIsTheSame)
{
    const auto paint = [&] { return painter.paint(model.strokes(), clock.now()); };
    painter.reset({480, 360}, 1);
    const QRegion first(0, 0, 120, 120);
    const QRegion further(60, 60, 180, 60);
    model.begin({20, 20});
    model.extend({100, 100});
    EXPECT_EQ(paint(), first);
    EXPECT_TRUE(paint().isEmpty()) << "nothing has happened";
    model.extend({200, 100});
    EXPECT_EQ(paint(), further);
    model.end();
    model.setColor(kGreen);
    clock.advance(1000);
    stroke({{60, 10}, {60, 340}});
    EXPECT_EQ(paint(), QRegion(0, 0, 120, 360));
    EXPECT_EQ(painter.picture().pixelColor(60, 60), kGreen) << "the newer one is on top";

    clock.advance(2500);
    EXPECT_EQ(paint(), first + further) << "the one that fades";
    EXPECT_NEAR(painter.picture().pixelColor(200, 100).alpha(), 128, 2);
    EXPECT_EQ(painter.picture().pixelColor(60, 60), kGreen);
    EXPECT_EQ(painter.picture(), paintedAnew());
    model.clear();
    EXPECT_EQ(paint(), first + further + QRegion(0, 0, 120, 360));
    EXPECT_EQ(painter.picture(), paintedAnew());
    EXPECT_TRUE(painter.inked().isEmpty());
}

} // namespace
} // namespace zivra::test
