#pragma once

#include "platform/FileSystem.h"
#include "platform/MovieAsset.h"

#include <QCoroTask>
#include <QDateTime>
#include <QObject>
#include <QString>
#include <QUrl>

#include <optional>
#include <vector>

namespace zivra {

/// The folder of finished recordings and the list of them. Main thread only.
///
/// There is no database: a recording's title is its file's name and its dates are its file's dates, so the
/// list can be read anew at any time. Nothing watches the folder: the list changes through `refresh()` only.
class Library : public QObject {
    Q_OBJECT

public:
    struct Recording {
        QUrl url;           ///< its identity
        QDateTime created;  ///< `distantPast()` where it could not be read
        QDateTime modified; ///< the same

        /// The file's name without the extension.
        [[nodiscard]] QString title() const;
        friend bool operator==(const Recording &, const Recording &) = default;
    };

    /// Finds the folder, makes it where it is missing, and reads it. Both services must outlive the
    /// object and its tasks.
    Library(FileSystem &files, MovieServices &movies, QObject *parent = nullptr);

    /// The stand-in for an unknown date: sorts below every real one.
    [[nodiscard]] static QDateTime distantPast();

    /// Newest first.
    [[nodiscard]] const std::vector<Recording> &recordings() const { return m_recordings; }
    [[nodiscard]] const QUrl &folder() const { return m_folder; }

    /// Names a new file after this moment, to the second, in local time; creates nothing and looks at
    /// nothing, so two calls within a second give the same name. `fileExtension` comes without a dot.
    [[nodiscard]] QUrl newRecordingURL(const QString &fileExtension) const;
    void refresh();
    /// The new URL, or absent when nothing was renamed: an empty or unchanged title, a name that is taken,
    /// or a failed move. The extension always stays.
    std::optional<QUrl> rename(const QUrl &url, const QString &title);
    /// Moves the file to the trash. One that cannot be moved stays in the list.
    void deleteRecording(const QUrl &url);
    /// Replaces the file by that stretch of itself, without encoding again. Throws and leaves the
    /// file as it was when that fails.
    [[nodiscard]] QCoro::Task<> trim(QUrl url, MediaTimeRange range);
    /// Completes the recordings that an earlier run of the program left behind when it died. One that is
    /// being made is left alone.
    QCoro::Task<> completeInterrupted();

Q_SIGNALS:
    void recordingsChanged();

private:
    [[nodiscard]] QUrl fileInFolder(const QString &name) const;
    [[nodiscard]] Recording readRecording(const QString &name) const;

    FileSystem &m_files;
    MovieServices &m_movies;
    QUrl m_folder;
    std::vector<Recording> m_recordings;
};

} // namespace zivra
