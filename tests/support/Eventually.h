#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>

#include <chrono>
#include <thread>

namespace zivra {

/// Runs the event loop until the condition holds, as long as `span` at most. Whether it holds.
template <typename Condition>
[[nodiscard]] bool eventually(Condition condition, std::chrono::milliseconds span = std::chrono::seconds(10))
{
    const QDeadlineTimer deadline(span);
    while (!deadline.hasExpired()) {
        if (condition()) {
            return true;
        }
        QCoreApplication::processEvents();
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return condition();
}

} // namespace zivra
