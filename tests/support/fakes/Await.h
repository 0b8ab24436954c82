#pragma once

#include "support/fakes/ManualQueue.h"

#include <QCoreApplication>
#include <QCoroTask>
#include <QElapsedTimer>

#include <functional>
#include <stdexcept>

namespace zivra::test {

/// Turns the event loop and, if given, runs the queues until `condition` holds; throws when it does not in
/// time.
inline void settleUntil(const std::function<bool()> &condition, ManualQueueFactory *queues = nullptr)
{
    constexpr qint64 kPatience = 5000; // milliseconds
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
        if (timer.hasExpired(kPatience)) {
            throw std::runtime_error("never came to its end");
        }
        if (queues != nullptr) {
            queues->run();
        }
        QCoreApplication::processEvents();
    }
}

/// Whatever is due now: events, and work on the queues.
inline void settle(ManualQueueFactory *queues = nullptr)
{
    constexpr int kRounds = 10;
    for (int round = 0; round < kRounds; ++round) {
        if (queues != nullptr) {
            queues->run();
        }
        QCoreApplication::processEvents();
    }
}

/// The task's result; throws what it throws.
template <typename T>
T await(QCoro::Task<T> &&task, ManualQueueFactory *queues = nullptr)
{
    settleUntil([&] { return task.isReady(); }, queues);
    return QCoro::waitFor(std::move(task));
}

} // namespace zivra::test
