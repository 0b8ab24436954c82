#include "cloud/UploadIndex.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

#include <cmath>
#include <optional>

namespace zivra {

namespace {

constexpr QLatin1String kId("id");
constexpr QLatin1String kShareURL("shareURL");
constexpr QLatin1String kStatus("status");
constexpr QLatin1String kSize("size");
constexpr QLatin1String kChunkSize("chunkSize");
constexpr qint64 kLargestIndex = 64 << 20; // bytes; a thousand times what a full library needs

bool isInteger(const QJsonValue &value)
{
    constexpr double kExactUpTo = 1LL << 53;
    const double number = value.toDouble();
    return value.isDouble() && std::floor(number) == number && std::abs(number) <= kExactUpTo;
}

std::optional<RemoteVideo> remoteVideo(const QJsonValue &value)
{
    const QJsonObject members = value.toObject();
    const bool isWhole = value.isObject() && members[kId].isString() && members[kShareURL].isString() &&
                         members[kStatus].isString() && isInteger(members[kSize]) &&
                         isInteger(members[kChunkSize]);
    if (!isWhole) {
        return std::nullopt;
    }
    return RemoteVideo{members[kId].toString(), members[kShareURL].toString(), members[kStatus].toString(),
                       members[kSize].toInteger(), members[kChunkSize].toInteger()};
}

QJsonObject toObject(const RemoteVideo &video)
{
    return {{kId, video.id},
            {kShareURL, video.shareURL},
            {kStatus, video.status},
            {kSize, video.size},
            {kChunkSize, video.chunkSize}};
}

} // namespace

RemoteVideos remoteVideosFromJson(const QByteArray &json)
{
    const QJsonObject members = QJsonDocument::fromJson(json).object();
    RemoteVideos videos;
    for (auto member = members.begin(); member != members.end(); ++member) {
        const auto video = remoteVideo(member.value());
        if (!video) {
            return {};
        }
        videos.insert(member.key(), *video);
    }
    return videos;
}

QByteArray toJson(const RemoteVideos &videos)
{
    QJsonObject members;
    for (auto video = videos.begin(); video != videos.end(); ++video) {
        members.insert(video.key(), toObject(video.value()));
    }
    return QJsonDocument(members).toJson(QJsonDocument::Compact);
}

RemoteVideos UploadIndex::load() const
{
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly) || file.size() > kLargestIndex) {
        return {};
    }
    return remoteVideosFromJson(file.readAll());
}

void UploadIndex::save(const RemoteVideos &videos) const
{
    QSaveFile file(m_path);
    if (file.open(QIODevice::WriteOnly)) {
        file.write(toJson(videos));
        file.commit();
    }
}

} // namespace zivra
