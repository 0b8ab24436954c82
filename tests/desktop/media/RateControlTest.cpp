#include "desktop/media/RateControl.h"

#include "desktop/media/ChangedBlocks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace zivra::test {

using desktop::ChangedBlocks;
using desktop::RateControl;

namespace {

constexpr std::int64_t kRate = 8'000'000;

/// A screen of which all pictures cost what the model says, and what was spent on it.
struct Screen {
    RateControl control{kRate, 60};
    std::vector<int> quantisers;
    double bits = 0;
    double time = 0;
    int untilKey = 0;

    /// `cost`: bits of a picture that changes everywhere, at quantiser 0.
    void show(double seconds, double interval, double cost, double share)
    {
        for (const double end = time + seconds; time < end; time += interval) {
            const bool isKey = untilKey == 0;
            untilKey = (isKey ? 60 : untilKey) - 1;
            const int quantiser = control.quantiser({.time = time, .isKey = isKey, .changedShare = share});
            const double size = (isKey ? 40e6 : cost * share + 2000) * std::exp2(-quantiser / 6.0);
            control.noteSize(static_cast<std::int64_t>(size));
            quantisers.push_back(quantiser);
            bits += size;
        }
    }
};

} // namespace

TEST(RateControl, KeepsTheRateWhateverMoves)
{
    for (const double cost : {2e5, 3e6, 2e7}) {
        for (const double share : {0.05, 1.0}) {
            Screen screen;
            screen.show(20, 1.0 / 30, cost, share);
            EXPECT_LT(screen.bits, 1.02 * kRate * 20) << cost << " " << share;
            screen.show(10, 1, cost, 0);
            const double before = screen.bits;
            screen.show(6, 1.0 / 30, 2e7, 1);
            EXPECT_LT(screen.bits - before, 1.25 * kRate * 6)
                << "what a still screen left over is not saved up";
        }
    }
}

TEST(RateControl, RefinesAStillScreenOnce)
{
    Screen screen;
    screen.show(3, 1.0 / 30, 2e7, 1);
    const auto moving = screen.quantisers.back();
    screen.quantisers.clear();
    screen.show(20, 1, 0, 0);
    const auto refined = std::min_element(screen.quantisers.begin(), screen.quantisers.end());
    EXPECT_LT(*refined, moving - 5);
    EXPECT_EQ(std::count(screen.quantisers.begin(), screen.quantisers.end(), *refined), 1);
    EXPECT_TRUE(std::all_of(refined + 1, screen.quantisers.end(), [&](int each) { return each > *refined; }))
        << "or it would be coded again";
}

TEST(ChangedBlocks, TrustsOnlyTheFrameAfterTheLastOne)
{
    VideoFrame frame;
    frame.width = 64;
    frame.height = 40;
    ChangedBlocks blocks(frame.width, frame.height);
    const auto noted = [&](std::uint64_t number, std::optional<std::vector<QRect>> changed) {
        frame.number = number;
        frame.changed = std::move(changed);
        blocks.note(frame);
        return blocks.share();
    };
    EXPECT_EQ(noted(1, std::vector<QRect>{}), 1) << "the first";
    EXPECT_DOUBLE_EQ(noted(2, std::vector{QRect(15, 38, 2, 9)}), 2 / 12.0);
    EXPECT_EQ(blocks.marks()[9], 0);
    EXPECT_EQ(blocks.marks()[10], ChangedBlocks::kUnchanged);
    EXPECT_EQ(noted(3, std::vector<QRect>{}), 0);
    EXPECT_EQ(noted(5, std::vector<QRect>{}), 1) << "one was lost";
    EXPECT_EQ(noted(6, std::nullopt), 1);
}

} // namespace zivra::test
