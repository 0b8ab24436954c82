#include "desktop/session/PosixFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace zivra::desktop {

namespace {

/// For file systems that can't do it in one step: the name is taken first, by an empty file of ours, which
/// the rename then replaces.
bool renameOverPlaceholder(const QByteArray &from, const QByteArray &to)
{
    if (!OpenFile(to, O_WRONLY | O_CREAT | O_EXCL, S_IRUSR | S_IWUSR).isOpen()) {
        return false;
    }
    if (std::rename(from.constData(), to.constData()) == 0) {
        return true;
    }
    const auto error = errno;
    ::unlink(to.constData());
    errno = error;
    return false;
}

} // namespace

OpenFile::OpenFile(const QByteArray &path, int flags, mode_t mode)
    : m_descriptor(::open(path.constData(), flags | O_CLOEXEC, mode))
{
}

OpenFile::~OpenFile()
{
    if (isOpen()) {
        ::close(m_descriptor);
    }
}

bool renameWithoutOverwriting(const QByteArray &from, const QByteArray &to)
{
    if (::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE) == 0) {
        return true;
    }
    const bool isUnsupported = errno == EINVAL || errno == ENOSYS;
    return isUnsupported && renameOverPlaceholder(from, to);
}

} // namespace zivra::desktop
