#include "desktop/session/DesktopFileSystem.h"

#include "desktop/session/CreationDate.h"
#include "desktop/session/PosixFiles.h"
#include "desktop/session/Trash.h"
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
    if (const auto error = moveToTrash(file.toLocalFile())) {
        fail(file, QStringLiteral("moved to the trash"), QString::fromStdString(error.message()));
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
