#include "desktop/threads/ThreadSerialQueue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <future>
#include <list>
#include <thread>
#include <vector>

namespace zivra::desktop {
namespace {

TEST(ThreadSerialQueue, RunsWorkOfManyThreadsOneAtATimeAndInOrder)
{
    constexpr int kEach = 2000;
    std::array<std::vector<int>, 4> seen; // touched by the queue's work alone: no lock
    {
        ThreadSerialQueue queue("order");
        std::list<std::jthread> threads;
        for (auto &numbers : seen) {
            threads.emplace_back([&] {
                for (int number = 0; number < kEach; ++number) {
                    queue.async([&numbers, number] { numbers.push_back(number); });
                }
            });
        }
    } // destroying the queue waits for all of it
    for (const auto &numbers : seen) {
        EXPECT_EQ(numbers.size(), kEach);
        EXPECT_TRUE(std::ranges::is_sorted(numbers));
    }
}

TEST(ThreadSerialQueue, SurvivesItsOwnWorkDroppingTheLastReference)
{
    std::promise<void> mayDrop;
    std::promise<void> laterWorkRan;
    auto queue = ThreadSerialQueueFactory().makeSerialQueue("dropped");
    auto &sameQueue = *queue;
    sameQueue.async([last = std::move(queue), wait = mayDrop.get_future().share()]() mutable {
        wait.wait();
        last.reset();
    });
    sameQueue.async([&] { laterWorkRan.set_value(); });
    mayDrop.set_value();
    laterWorkRan.get_future().wait();
}

} // namespace
} // namespace zivra::desktop
