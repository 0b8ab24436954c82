#include "desktop/session/Trash.h"

#include "desktop/session/PosixFiles.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <optional>

// QFile::moveToTrash() of Qt 6.4 writes paths without the required percent encoding, so that a name with a
// "%" can't be restored, and moves files into the current folder where the home folder has no ~/.local/share.

namespace zivra::desktop {

namespace {

struct TrashFolder {
    QString path;
    QString topFolder; ///< of its file system, which its paths are relative to; empty for the user's own
};

std::optional<struct stat> status(const QString &path)
{
    struct stat status = {};
    if (::lstat(QFile::encodeName(path).constData(), &status) != 0) {
        return std::nullopt;
    }
    return status;
}

bool isOwnFolder(const QString &path)
{
    const auto found = status(path);
    return found && S_ISDIR(found->st_mode) && found->st_uid == ::getuid();
}

/// Makes the folder for this user alone, or finds it made.
bool ensureOwnFolder(const QString &path)
{
    ::mkdir(QFile::encodeName(path).constData(), S_IRWXU);
    return isOwnFolder(path);
}

/// The highest folder above the file in the same file system.
QString topFolder(const QString &file, dev_t device)
{
    auto top = QFileInfo(file).path();
    for (;;) {
        const auto parent = QFileInfo(top).path();
        const auto found = status(parent);
        if (parent == top || !found || found->st_dev != device) {
            return top;
        }
        top = parent;
    }
}

TrashFolder trashAtTop(const QString &top)
{
    const auto user = QString::number(::getuid());
    // A shared folder that the administrator made; without the sticky bit it can't be trusted.
    const auto shared = QDir(top).filePath(QStringLiteral(".Trash"));
    const auto found = status(shared);
    if (found && S_ISDIR(found->st_mode) && (found->st_mode & S_ISVTX) != 0) {
        const auto own = QDir(shared).filePath(user);
        if (ensureOwnFolder(own)) {
            return {.path = own, .topFolder = top};
        }
    }
    return {.path = QDir(top).filePath(QStringLiteral(".Trash-") + user), .topFolder = top};
}

TrashFolder trashFor(const QString &file, dev_t device)
{
    const QDir data(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation));
    data.mkpath(QStringLiteral("."));
    const auto dataStatus = status(data.canonicalPath());
    if (dataStatus && dataStatus->st_dev == device) {
        return {.path = data.filePath(QStringLiteral("Trash")), .topFolder = {}};
    }
    return trashAtTop(topFolder(file, device));
}

QByteArray information(const QString &path)
{
    const auto now = QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-ddThh:mm:ss"));
    return "[Trash Info]\nPath=" + QFile::encodeName(path).toPercentEncoding("/") +
           "\nDeletionDate=" + now.toLatin1() + "\n";
}

/// The name of the file in the trash: numbered from 2 where the trash has that name already.
QString trashedName(const QFileInfo &file, int number)
{
    if (number == 1) {
        return file.fileName();
    }
    const auto suffix = file.suffix().isEmpty() ? QString() : QLatin1Char('.') + file.suffix();
    return QStringLiteral("%1 %2%3").arg(file.completeBaseName()).arg(number).arg(suffix);
}

std::error_code lastError()
{
    return {errno, std::generic_category()};
}

/// Puts the file under this name. The information comes first and takes the name, as file managers expect.
std::error_code putInto(const QDir &trash, const QString &file, const QString &name, const QByteArray &info)
{
    const auto infoPath = QFile::encodeName(trash.filePath(QStringLiteral("info/%1.trashinfo").arg(name)));
    const OpenFile infoFile(infoPath, O_WRONLY | O_CREAT | O_EXCL, S_IRUSR | S_IWUSR);
    if (!infoFile.isOpen()) {
        return lastError();
    }
    const auto target = QFile::encodeName(trash.filePath(QStringLiteral("files/") + name));
    if (::write(infoFile.descriptor(), info.constData(), info.size()) == info.size() &&
        renameWithoutOverwriting(QFile::encodeName(file), target)) {
        return {};
    }
    const auto error = lastError();
    ::unlink(infoPath.constData());
    return error;
}

} // namespace

std::error_code moveToTrash(const QString &file)
{
    const QFileInfo given(file);
    // Through symbolic links in the folder's path, but not through one that is the item itself.
    const auto path = QDir(QFileInfo(given.absolutePath()).canonicalFilePath()).filePath(given.fileName());
    const auto found = status(path);
    if (!found) {
        return lastError();
    }
    const auto folder = trashFor(path, found->st_dev);
    const QDir trash(folder.path);
    if (!ensureOwnFolder(folder.path) || !ensureOwnFolder(trash.filePath(QStringLiteral("files"))) ||
        !ensureOwnFolder(trash.filePath(QStringLiteral("info")))) {
        return lastError();
    }
    const auto info =
        information(folder.topFolder.isEmpty() ? path : QDir(folder.topFolder).relativeFilePath(path));
    auto error = std::make_error_code(std::errc::file_exists);
    for (int number = 1; error == std::errc::file_exists; ++number) {
        error = putInto(trash, path, trashedName(given, number), info);
    }
    return error;
}

} // namespace zivra::desktop
