#include "desktop/threads/ThreadSerialQueue.h"

#include <pthread.h>

#include <condition_variable>
#include <deque>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

namespace zivra::desktop {

namespace {

std::string threadName(std::string_view label)
{
    constexpr std::size_t kLongest = 15;
    if (label.size() > kLongest) {
        label.remove_prefix(label.rfind('.') + 1); // npos + 1 is 0
    }
    return std::string(label.substr(0, kLongest));
}

} // namespace

/// What the queue and its thread share.
class ThreadSerialQueue::Worker {
public:
    void add(std::function<void()> work)
    {
        {
            const std::lock_guard lock(m_mutex);
            m_work.push_back(std::move(work));
        }
        m_wake.notify_one();
    }

    static void start(const std::shared_ptr<Worker> &worker, std::string_view label)
    {
        worker->m_thread = std::thread([worker, name = threadName(label)] {
            pthread_setname_np(pthread_self(), name.c_str());
            while (worker->runNext()) {
            }
        });
    }

    void finish()
    {
        {
            const std::lock_guard lock(m_mutex);
            m_isFinishing = true;
        }
        m_wake.notify_one();
        if (m_thread.get_id() == std::this_thread::get_id()) {
            m_thread.detach();
        } else {
            m_thread.join();
        }
    }

private:
    /// False when there is no more work to come.
    bool runNext()
    {
        std::function<void()> work;
        {
            std::unique_lock lock(m_mutex);
            m_wake.wait(lock, [this] { return m_isFinishing || !m_work.empty(); });
            if (m_work.empty()) {
                return false;
            }
            work = std::move(m_work.front());
            m_work.pop_front();
        }
        work();
        return true;
    }

    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::deque<std::function<void()>> m_work; ///< guarded by m_mutex
    bool m_isFinishing = false;               ///< guarded by m_mutex
    std::thread m_thread;                     ///< touched by the queue's maker and destroyer only
};

ThreadSerialQueue::ThreadSerialQueue(std::string_view label) : m_worker(std::make_shared<Worker>())
{
    Worker::start(m_worker, label);
}

ThreadSerialQueue::~ThreadSerialQueue()
{
    m_worker->finish();
}

void ThreadSerialQueue::async(std::function<void()> work)
{
    m_worker->add(std::move(work));
}

} // namespace zivra::desktop
