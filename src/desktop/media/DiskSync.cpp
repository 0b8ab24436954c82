#include "desktop/media/DiskSync.h"

#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace zivra::desktop {

namespace {

/// A file's name is in its folder, which not every file system can be asked to write.
void syncFolder(const QString &path)
{
    const QByteArray folder = QFile::encodeName(QFileInfo(path).absolutePath());
    const int descriptor = ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor >= 0) {
        static_cast<void>(::fsync(descriptor));
        ::close(descriptor);
    }
}

} // namespace

void DiskSync::request()
{
    const std::lock_guard lock(m_mutex);
    if (!m_thread.joinable() && !m_isFinishing) {
        m_thread = std::thread([this] { run(); });
    }
    m_isRequested = true;
    m_wake.notify_one();
}

int DiskSync::finish()
{
    {
        const std::lock_guard lock(m_mutex);
        m_isFinishing = true;
        m_wake.notify_one();
    }
    if (m_thread.joinable()) {
        m_thread.join();
    }
    return m_failure;
}

void DiskSync::run()
{
    syncFolder(m_path);
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_wake.wait(lock, [this] { return m_isRequested || m_isFinishing; });
        if (!m_isRequested) {
            return;
        }
        m_isRequested = false;
        lock.unlock();
        const int failure = ::fdatasync(m_descriptor) == 0 ? 0 : errno;
        lock.lock();
        m_failure = m_failure != 0 ? m_failure : failure;
    }
}

} // namespace zivra::desktop
