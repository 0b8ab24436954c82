#include "library/Library.h"

#include "capture/MovieFiles.h"
#include "capture/ZivraError.h"
#include "platform/PlatformError.h"

#include <QCoroFuture>
#include <QDir>
#include <QFileInfo>
#include <QPointer>

#include <algorithm>
#include <functional>
#include <memory>
#include <utility>

namespace zivra {

namespace {

bool isMovie(const QString &name)
{
    const QString extension = QFileInfo(name).suffix().toLower();
    return extension == QLatin1String("mp4") || extension == QLatin1String("mov");
}

QDateTime knownDate(const QDateTime &date)
{
    return date.isValid() ? date : Library::distantPast();
}

/// What a title may not hold becomes a dash.
QString sanitized(QString title)
{
    return title.replace(QLatin1Char('/'), QLatin1Char('-'))
        .replace(QLatin1Char(':'), QLatin1Char('-'))
        .trimmed();
}

/// What cannot be opened cannot be exported either.
QCoro::Task<std::shared_ptr<const MovieAsset>> openForExport(MovieServices &movies, QUrl url)
{
    try {
        const std::shared_ptr<const MovieAsset> asset = co_await movies.openAsset(url);
        co_return asset;
    } catch (const PlatformError &) {
        throw ZivraError(ZivraError::recordingFailed);
    }
}

} // namespace

QString Library::Recording::title() const
{
    return QFileInfo(url.toLocalFile()).completeBaseName();
}

Library::Library(FileSystem &files, MovieServices &movies, QObject *parent)
    : QObject(parent),
      m_files(files),
      m_movies(movies),
      m_folder(
          QUrl::fromLocalFile(QDir(files.moviesDirectory().toLocalFile()).filePath(QStringLiteral("Zivra"))))
{
    QDir().mkpath(m_folder.toLocalFile());
    refresh();
}

QDateTime Library::distantPast()
{
    return {QDate(1, 1, 1), QTime(0, 0), Qt::UTC};
}

QUrl Library::fileInFolder(const QString &name) const
{
    return QUrl::fromLocalFile(QDir(m_folder.toLocalFile()).filePath(name));
}

QUrl Library::newRecordingURL(const QString &fileExtension) const
{
    const QString moment = QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd 'at' HH.mm.ss"));
    return fileInFolder(QStringLiteral("Zivra %1.%2").arg(moment, fileExtension));
}

void Library::refresh()
{
    std::vector<Recording> found;
    const QStringList names = QDir(m_folder.toLocalFile()).entryList(QDir::Files, QDir::Unsorted);
    for (const QString &name : names) {
        if (isMovie(name)) {
            found.push_back(readRecording(name));
        }
    }
    std::ranges::stable_sort(found, std::ranges::greater(), &Recording::created);
    m_recordings = std::move(found);
    Q_EMIT recordingsChanged();
}

Library::Recording Library::readRecording(const QString &name) const
{
    const QUrl url = fileInFolder(name);
    try {
        const FileDates dates = m_files.dates(url);
        return {url, knownDate(dates.created), knownDate(dates.modified)};
    } catch (const PlatformError &) {
        return {url, distantPast(), distantPast()};
    }
}

std::optional<QUrl> Library::rename(const QUrl &url, const QString &title)
{
    const QString newTitle = sanitized(title);
    if (newTitle.isEmpty()) {
        return std::nullopt;
    }
    const QString extension = QFileInfo(url.toLocalFile()).suffix();
    const QUrl target = fileInFolder(newTitle + QLatin1Char('.') + extension);
    if (target == url || QFileInfo::exists(target.toLocalFile())) {
        return std::nullopt;
    }
    try {
        m_files.moveItem(url, target);
    } catch (const PlatformError &) {
        return std::nullopt;
    }
    refresh();
    return target;
}

void Library::deleteRecording(const QUrl &url)
{
    try {
        m_files.trashItem(url);
    } catch (const PlatformError &) {
        // The list shows that the file is still there.
    }
    refresh();
}

QCoro::Task<> Library::trim(QUrl url, MediaTimeRange range)
{
    const QPointer self(this);
    FileSystem &files = m_files;
    MovieServices &movies = m_movies;
    const QUrl temporary = fileInFolder(temporaryName(QLatin1String(".trim-"), url));
    const std::shared_ptr<const MovieAsset> asset = co_await openForExport(movies, url);
    co_await movies.exportPassthrough(asset, range, temporary, movieFileType(url));
    files.replaceItem(url, temporary);
    if (self) {
        self->refresh();
    }
}

QCoro::Task<> Library::completeInterrupted()
{
    const QPointer self(this);
    MovieServices &movies = m_movies;
    bool isAnyChanged = false;
    for (const Recording &recording : std::vector(m_recordings)) {
        const bool isChanged = co_await movies.completeInterrupted(recording.url);
        isAnyChanged |= isChanged;
    }
    if (self && isAnyChanged) {
        self->refresh();
    }
}

} // namespace zivra
