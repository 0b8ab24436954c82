#pragma once

#include "support/fakes/ManualQueue.h"

#include <QCoreApplication>
#include <QCoroTask>
#include <QElapsedTimer>

#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <type_traits>
#include <utility>
#include <variant>

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

/// How a task has ended: neither is set before.
template <typename T>
struct TaskOutcome {
    std::optional<std::conditional_t<std::is_void_v<T>, std::monostate, T>> value;
    std::exception_ptr error;
};

template <typename T>
QCoro::Task<> follow(QCoro::Task<T> task, std::shared_ptr<TaskOutcome<T>> outcome)
{
    try {
        if constexpr (std::is_void_v<T>) {
            co_await task;
            outcome->value.emplace();
        } else {
            T value = co_await task;
            outcome->value = std::move(value);
        }
    } catch (...) {
        outcome->error = std::current_exception();
    }
}

/// The task's result; throws what it throws. (`QCoro::waitFor` never returns from a task that throws.)
template <typename T>
T await(QCoro::Task<T> &&task, ManualQueueFactory *queues = nullptr)
{
    const auto outcome = std::make_shared<TaskOutcome<T>>();
    const auto following = follow(std::move(task), outcome);
    settleUntil([&] { return outcome->value || outcome->error; }, queues);
    if (outcome->error) {
        std::rethrow_exception(outcome->error);
    }
    if constexpr (!std::is_void_v<T>) {
        return std::move(*outcome->value);
    }
}

} // namespace zivra::test
