#pragma once

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

} // namespace zivra
