#pragma once

#include <QByteArray>
#include <QLatin1String>
#include <QString>

namespace zivra {

/// What we know of a file's copy on the server.
struct RemoteVideo {
    QString id; ///< the server's
    QString shareURL;
    QString status;       ///< one of the two below, as we left it
    qint64 size = 0;      ///< of the file when the copy was begun, in bytes
    qint64 chunkSize = 0; ///< in bytes

    static constexpr QLatin1String kUploading{"uploading"};
    static constexpr QLatin1String kReady{"ready"};

    [[nodiscard]] bool isReady() const { return status == kReady; }

    friend bool operator==(const RemoteVideo &, const RemoteVideo &) = default;
};

/// The size of chunks to send with where that one was asked for: itself, or 8 MiB where it is not positive or
/// more than the 256 MiB of which we would hold a chunk in memory.
[[nodiscard]] qint64 usableChunkSize(qint64 size);

/// What the server answered when a copy was begun of a file of that size. Throws `JsonError`, or a
/// `CloudError` for an answer without an id and a link.
[[nodiscard]] RemoteVideo createdVideo(const QByteArray &answer, qint64 size);

} // namespace zivra
