#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>

#include <chrono>
#include <thread>

namespace zivra::desktop {

/// Runs the event loop until the condition holds, for five seconds at most.
template <typename Condition>
[[nodiscard]] bool eventually(Condition condition)
{
    using namespace std::chrono_literals;
    const QDeadlineTimer deadline(5s);
    while (!condition() && !deadline.hasExpired()) {
        QCoreApplication::processEvents();
        std::this_thread::sleep_for(5ms);
    }
    return condition();
}

/// Runs the event loop for a while.
inline void passTime(std::chrono::milliseconds span)
{
    const QDeadlineTimer deadline(span);
    while (!deadline.hasExpired()) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

} // namespace zivra::desktop
