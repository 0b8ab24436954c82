#pragma once

#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>

#include <chrono>

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
        QEventLoop loop;
        QTimer::singleShot(2, Qt::PreciseTimer, &loop, &QEventLoop::quit);
        loop.exec();
    }
    return condition();
}

} // namespace zivra
