#pragma once

#include "cloud/CloudAPI.h"
#include "cloud/CloudAccount.h"
#include "cloud/RemoteVideo.h"
#include "cloud/UploadIndex.h"
#include "platform/HttpSender.h"
#include "platform/MovieAsset.h"

#include <QFuture>
#include <QMap>
#include <QObject>
#include <QUrl>

#include <chrono>
#include <functional>
#include <memory>

class QFile;

namespace zivra {

/// Sends movies of one folder to the cloud server, and knows of each what became of it. The link comes first,
/// as soon as the server has named it; the movie follows in chunks. Main thread only.
///
/// Files go by their names, extension included. Different files are sent at the same time, of one file one
/// chunk after the other. What was begun and not finished keeps its link: it is sent again from the start
/// when it is asked for again. Signing out ends no upload.
class CloudUploader : public QObject {
    Q_OBJECT

public:
    using LinkHandler = std::function<void(const QString &link)>;
    /// Completes after that time.
    using Sleep = std::function<QFuture<void>(std::chrono::seconds)>;

    /// What is handed in outlives the object. The index is kept in the folder; entries that belong to another
    /// server than the account's are dropped.
    CloudUploader(CloudAccount &account, const QUrl &folder, MovieServices &movies, HttpSender &sender,
                  QObject *parent = nullptr);
    ~CloudUploader() override;
    Q_DISABLE_COPY_MOVE(CloudUploader)

    /// From 0 to 1, of the files that are being sent.
    [[nodiscard]] const QMap<QString, double> &progress() const { return m_progress; }
    /// What went wrong with a file in this run the last time, for the user.
    [[nodiscard]] const QMap<QString, QString> &errors() const { return m_errors; }
    [[nodiscard]] const RemoteVideos &remote() const { return m_remote; }
    [[nodiscard]] std::optional<RemoteVideo> remoteVideo(const QUrl &file) const;

    /// Returns at once. Does nothing while the file is being sent. `onLink`, which may be empty, gets the
    /// link before the first chunk leaves.
    void upload(const QUrl &file, LinkHandler onLink);
    /// The file has another name now. An upload goes on under it.
    void moveEntry(const QUrl &from, const QUrl &to);
    /// The file is gone. Its upload ends without a word; the server is not told.
    void forget(const QUrl &file);

    /// Instead of the timer between the tries of a chunk.
    void setSleep(Sleep sleep) { m_sleep = std::move(sleep); }

Q_SIGNALS:
    /// One of the three maps has changed for that name.
    void changed(const QString &name);

private:
    struct Upload;
    using UploadPtr = std::shared_ptr<Upload>;

    QCoro::Task<> run(UploadPtr upload);
    QCoro::Task<> send(UploadPtr upload);
    QCoro::Task<RemoteVideo> createVideo(UploadPtr upload, qint64 size);
    QCoro::Task<int> sendChunks(UploadPtr upload, RemoteVideo video);
    QCoro::Task<> sendChunk(UploadPtr upload, QString path, QByteArray data);
    void abandonIfChanged(const QString &name, qint64 size);
    void handOver(const UploadPtr &upload, const RemoteVideo &video);
    void fail(const UploadPtr &upload, const std::exception &error);
    void store(const QString &name, const std::optional<RemoteVideo> &video);
    void setProgress(const QString &name, std::optional<double> progress);
    void setError(const QString &name, const std::optional<QString> &text);

    CloudAccount &m_account;
    MovieServices &m_movies;
    HttpSender &m_sender;
    UploadIndex m_index;
    Sleep m_sleep;
    QMap<QString, double> m_progress;
    QMap<QString, QString> m_errors;
    RemoteVideos m_remote;
    QMap<QString, UploadPtr> m_running;
};

} // namespace zivra
