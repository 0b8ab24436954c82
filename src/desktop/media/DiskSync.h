#pragma once

#include <QString>

#include <condition_variable>
#include <mutex>
#include <thread>

namespace zivra::desktop {

/// Brings a new file's data to the disk, and at first its name, on a thread of its own, while its writer goes
/// on.
class DiskSync {
public:
    /// The file must stay open as long as this lives, or until `finish()`.
    DiskSync(int fileDescriptor, const QString &path) : m_descriptor(fileDescriptor), m_path(path) {}
    ~DiskSync() { finish(); }
    DiskSync(const DiskSync &) = delete;
    DiskSync &operator=(const DiskSync &) = delete;

    /// Returns at once. What was written before will be on the disk; requests that come faster than the disk
    /// works are served together.
    void request();
    /// Waits until all requests are served. Nothing can be requested any more. Returns the `errno` of the
    /// first time that it went wrong, which the system tells only once; 0 for never.
    int finish();

private:
    void run();

    const int m_descriptor;
    const QString m_path;
    std::mutex m_mutex; ///< guards the members up to the thread
    std::condition_variable m_wake;
    bool m_isRequested = false;
    bool m_isFinishing = false;
    int m_failure = 0;
    std::thread m_thread; ///< started by the first request
};

} // namespace zivra::desktop
