#include "desktop/session/DesktopFileSystem.h"

#include "desktop/session/CreationDate.h"
#include "platform/PlatformError.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace zivra::desktop {

namespace {

/// An open file descriptor.
class OpenFile {
public:
    OpenFile(const QByteArray &path, int flags, mode_t mode = 0)
        : m_descriptor(::open(path.constData(), flags | O_CLOEXEC, mode))
    {
    }
    ~OpenFile()
    {
        if (isOpen()) {
            ::close(m_descriptor);
        }
    }
    Q_DISABLE_COPY_MOVE(OpenFile)

    [[nodiscard]] bool isOpen() const { return m_descriptor >= 0; }
    [[nodiscard]] int descriptor() const { return m_descriptor; }

private:
    int m_descriptor;
};

QByteArray nativePath(const QUrl &url)
{
    return QFile::encodeName(url.toLocalFile());
}

/// "“Take.mp4” could not be renamed: No space left on device"
[[noreturn]] void fail(const QUrl &file, const QString &what, const QString &reason)
{
    throw PlatformError(QStringLiteral("“%1” could not be %2: %3").arg(file.fileName(), what, reason));
}

[[noreturn]] void failWithErrno(const QUrl &file, const QString &what)
{
    fail(file, what, qt_error_string(errno));
}

/// Renames without overwriting where the file system can't do that in one step: the name is taken first,
/// by an empty file of ours, which the rename then replaces.
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

bool renameWithoutOverwriting(const QByteArray &from, const QByteArray &to)
{
    if (::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE) == 0) {
        return true;
    }
    const bool unsupported = errno == EINVAL || errno == ENOSYS;
    return unsupported && renameOverPlaceholder(from, to);
}

void syncFolder(const QUrl &file)
{
    const OpenFile folder(QFile::encodeName(QFileInfo(file.toLocalFile()).path()), O_RDONLY | O_DIRECTORY);
    if (folder.isOpen()) {
        ::fsync(folder.descriptor());
    }
}

} // namespace

QUrl DesktopFileSystem::moviesDirectory() const
{
    auto path = QDir::cleanPath(QStandardPaths::writableLocation(QStandardPaths::MoviesLocation));
    if (path == QDir::cleanPath(QDir::homePath())) {
        path += QStringLiteral("/Videos");
    }
    return QUrl::fromLocalFile(path);
}

FileDates DesktopFileSystem::dates(const QUrl &file) const
{
    return {.created = creationDate(nativePath(file)),
            .modified = QFileInfo(file.toLocalFile()).lastModified().toUTC()};
}

void DesktopFileSystem::moveItem(const QUrl &from, const QUrl &to)
{
    if (!renameWithoutOverwriting(nativePath(from), nativePath(to))) {
        if (errno == EEXIST) {
            fail(from, QStringLiteral("renamed"), QStringLiteral("“%1” exists already").arg(to.fileName()));
        }
        failWithErrno(from, QStringLiteral("renamed"));
    }
}

void DesktopFileSystem::trashItem(const QUrl &file)
{
    QFile item(file.toLocalFile());
    if (!item.moveToTrash()) {
        fail(file, QStringLiteral("moved to the trash"), item.errorString());
    }
}

void DesktopFileSystem::replaceItem(const QUrl &item, const QUrl &newItem)
{
    const auto what = QStringLiteral("replaced");
    const auto path = nativePath(item);
    const auto newPath = nativePath(newItem);

    struct stat old = {};
    struct stat replacement = {};
    const OpenFile file(newPath, O_RDONLY);
    if (::stat(path.constData(), &old) != 0 || !file.isOpen() ||
        ::fstat(file.descriptor(), &replacement) != 0) {
        failWithErrno(item, what);
    }
    const auto created = creationDate(path);
    if (created.isValid()) {
        storeCreationDate(file.descriptor(), created);
    }
    ::fchmod(file.descriptor(), old.st_mode & ALLPERMS);

    // The content must be on the disk before its name is.
    if (::fsync(file.descriptor()) != 0 || std::rename(newPath.constData(), path.constData()) != 0) {
        const auto error = errno;
        forgetCreationDate(file.descriptor());
        ::fchmod(file.descriptor(), replacement.st_mode & ALLPERMS);
        errno = error;
        failWithErrno(item, what);
    }
    syncFolder(item);
}

} // namespace zivra::desktop
