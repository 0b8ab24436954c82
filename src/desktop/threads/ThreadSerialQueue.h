#pragma once

#include "platform/SerialQueue.h"

namespace zivra::desktop {

/// A serial queue on a thread of its own, which bears the queue's label. Linux keeps 15 bytes of a name: a
/// longer label counts from its last dot on.
///
/// Beyond what `SerialQueue` promises: when its own work drops the last reference to the queue, the work
/// already handed in still runs to its end and the thread then ends by itself.
class ThreadSerialQueue final : public SerialQueue {
public:
    explicit ThreadSerialQueue(std::string_view label);
    /// Waits for the work already handed in, except on the queue's own thread.
    ~ThreadSerialQueue() override;
    ThreadSerialQueue(const ThreadSerialQueue &) = delete;
    ThreadSerialQueue &operator=(const ThreadSerialQueue &) = delete;

    void async(std::function<void()> work) override;

private:
    class Worker;
    std::shared_ptr<Worker> m_worker; ///< shared with the thread, which may outlive the queue
};

class ThreadSerialQueueFactory final : public SerialQueueFactory {
public:
    [[nodiscard]] std::shared_ptr<SerialQueue> makeSerialQueue(std::string_view label) override
    {
        return std::make_shared<ThreadSerialQueue>(label);
    }
};

} // namespace zivra::desktop
