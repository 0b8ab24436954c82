#include "desktop/threads/ThreadSerialQueue.h"

#include "desktop/threads/MonotonicClock.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <future>
#include <string>
#include <thread>
#include <vector>

namespace zivra::desktop {
namespace {

TEST(ThreadSerialQueue, RunsWorkOfManyThreadsOneAtATimeAndInOrder)
{
    constexpr int kThreads = 4;
    constexpr int kEach = 2000;
    std::array<std::vector<int>, kThreads> seen; // touched by the queue's work alone: no lock
    {
        ThreadSerialQueue queue("order");
        std::vector<std::jthread> threads;
        threads.reserve(kThreads);
        for (int thread = 0; thread < kThreads; ++thread) {
            threads.emplace_back([&, thread] {
                for (int number = 0; number < kEach; ++number) {
                    queue.async([&, thread, number] { seen.at(thread).push_back(number); });
                }
            });
        }
    } // destroying the queue waits for all of it
    for (const auto &numbers : seen) {
        ASSERT_EQ(numbers.size(), kEach);
        EXPECT_TRUE(std::is_sorted(numbers.begin(), numbers.end()));
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

TEST(ThreadSerialQueue, NamesItsThread)
{
    const auto threadName = [](std::string_view label) {
        std::promise<std::string> name;
        ThreadSerialQueue queue(label);
        queue.async([&] {
            std::array<char, 16> buffer{};
            pthread_getname_np(pthread_self(), buffer.data(), buffer.size());
            name.set_value(buffer.data());
        });
        return name.get_future().get();
    };
    EXPECT_EQ(threadName("short"), "short");
    EXPECT_EQ(threadName("io.example.recorder.screen"), "screen");
    EXPECT_EQ(threadName("a-name-without-any-dot"), "a-name-without-");
}

TEST(MonotonicClock, LiesOnTheSteadyClock)
{
    const auto before = std::chrono::steady_clock::now().time_since_epoch();
    const MediaTime now = MonotonicClock().now();
    const auto after = std::chrono::steady_clock::now().time_since_epoch();
    EXPECT_LE(before.count(), now.nanoseconds());
    EXPECT_GE(after.count(), now.nanoseconds());
}

} // namespace
} // namespace zivra::desktop
