#pragma once

#include "cloud/RemoteVideo.h"

#include <QByteArray>
#include <QMap>
#include <QString>

namespace zivra {

/// The remote copies by the names of their files.
using RemoteVideos = QMap<QString, RemoteVideo>;

/// Absent keys, other types and text that is no JSON object spoil the whole: then there is nothing.
[[nodiscard]] RemoteVideos remoteVideosFromJson(const QByteArray &json);
/// One object with a member for each file, compact.
[[nodiscard]] QByteArray toJson(const RemoteVideos &videos);

/// The remote copies in a file of theirs. Main thread only; the file is small.
class UploadIndex {
public:
    explicit UploadIndex(QString path) : m_path(std::move(path)) {}

    /// Nothing where there is no such file, or it is damaged: then it stays until something is saved.
    [[nodiscard]] RemoteVideos load() const;
    /// Replaces the file as a whole. A failure is not told: the index is a convenience.
    void save(const RemoteVideos &videos) const;

private:
    QString m_path;
};

} // namespace zivra
