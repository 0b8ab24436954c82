#pragma once

#include "platform/SerialQueue.h"

#include <QString>

#include <deque>
#include <map>
#include <utility>

namespace zivra::test {

/// A queue whose work the test runs, on its own thread.
class ManualQueue final : public SerialQueue {
public:
    void async(std::function<void()> work) override { m_work.push_back(std::move(work)); }

    [[nodiscard]] bool isIdle() const { return m_work.empty(); }
    /// Also what is handed in meanwhile.
    void run()
    {
        while (!m_work.empty()) {
            const auto work = std::move(m_work.front());
            m_work.pop_front();
            work();
        }
    }

private:
    std::deque<std::function<void()>> m_work;
};

class ManualQueueFactory final : public SerialQueueFactory {
public:
    std::map<std::string, std::shared_ptr<ManualQueue>, std::less<>> queues; ///< the last of each label

    std::shared_ptr<SerialQueue> makeSerialQueue(std::string_view label) override
    {
        auto queue = std::make_shared<ManualQueue>();
        queues.insert_or_assign(std::string(label), queue);
        return queue;
    }
    /// Until every queue is idle.
    void run()
    {
        for (bool ran = true; ran;) {
            ran = false;
            for (const auto &[label, queue] : std::map(queues)) {
                ran = ran || !queue->isIdle();
                queue->run();
            }
        }
    }
};

} // namespace zivra::test
