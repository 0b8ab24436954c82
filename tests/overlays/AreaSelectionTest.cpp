#include "overlays/AreaSelectionModel.h"

#include <gtest/gtest.h>

namespace zivra::test {
namespace {

struct AreaSelection : testing::Test {
    void drag(QPointF from, QPointF to)
    {
        model.press(from);
        model.drag(to);
        EXPECT_FALSE(model.canRecord()) << "the mouse still holds it";
        model.release(to);
    }

    std::vector<std::optional<QRectF>> answers;
    AreaSelectionModel model;
};

TEST_F(AreaSelection, IsDraggedEitherWayAndReplacedByTheNextDrag)
{
    drag({300, 200}, {301, 200.5});
    EXPECT_FALSE(model.hasSelection()) << "a click";
    drag({740.7, 460.2}, {100, 100});
    EXPECT_EQ(model.selection(), QRectF(100, 100, 640.7, 360.2).normalized());
    EXPECT_EQ(model.size(), "640 × 360");
    EXPECT_TRUE(model.canRecord());
    model.press({5, 5});
    model.release({5, 5});
    EXPECT_TRUE(model.canRecord()) << "a click leaves the selection as it is";
    drag({10, 10}, {49, 210});
    EXPECT_FALSE(model.canRecord()) << "39 wide";
    EXPECT_EQ(model.size(), "39 × 200");
}

TEST_F(AreaSelection, AnswersOnceWithAWholeRectangle)
{
    model.onDone = [this](std::optional<QRectF> area) { answers.push_back(area); };
    model.record();
    EXPECT_TRUE(answers.empty()) << "there is nothing to record";
    drag({10.4, 20.6}, {110.2, 80.1});
    model.record();
    model.cancel();
    ASSERT_EQ(answers.size(), 1);
    EXPECT_EQ(answers.front(), QRectF(10, 20, 101, 61));

    model.onDone = [this](std::optional<QRectF> area) { answers.push_back(area); };
    model.press({0, 0});
    model.drag({100, 100});
    model.cancel();
    EXPECT_FALSE(answers.back()) << "also while it is being dragged";
}

} // namespace
} // namespace zivra::test
