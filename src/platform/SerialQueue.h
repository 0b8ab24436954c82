#pragma once

#include <functional>
#include <memory>
#include <string_view>

namespace zivra {

/// Runs pieces of work strictly one at a time, in the order they were handed in. State that only work
/// of one queue touches needs no lock.
///
/// `async` may be called from any thread, also from work on the queue itself, and returns at once.
/// Destroying a queue lets the work already handed in run to its end; it must not be destroyed from
/// work that runs on it.
class SerialQueue {
public:
    virtual ~SerialQueue() = default;

    virtual void async(std::function<void()> work) = 0;
};

class SerialQueueFactory {
public:
    virtual ~SerialQueueFactory() = default;

    /// `label` names the queue's thread in debuggers and profilers.
    [[nodiscard]] virtual std::shared_ptr<SerialQueue> makeSerialQueue(std::string_view label) = 0;
};

} // namespace zivra
