#include "cloud/RemoteVideo.h"

#include "cloud/CloudError.h"

#include <QJsonObject>

#include <cmath>

namespace zivra {

namespace {

constexpr qint64 kDefaultChunkSize = 8 << 20;   // bytes
constexpr qint64 kLargestChunkSize = 256 << 20; // bytes

qint64 chunkSizeFrom(const QJsonValue &value)
{
    const double number = value.toDouble();
    return value.isDouble() && std::floor(number) == number ? usableChunkSize(value.toInteger(-1))
                                                            : kDefaultChunkSize;
}

QString requireString(const QJsonObject &object, QLatin1String key)
{
    const QJsonValue value = object[key];
    if (!value.isString()) {
        throw CloudError(CloudError::badResponse);
    }
    return value.toString();
}

} // namespace

qint64 usableChunkSize(qint64 size)
{
    return size > 0 && size <= kLargestChunkSize ? size : kDefaultChunkSize;
}

RemoteVideo createdVideo(const QByteArray &answer, qint64 size)
{
    const QJsonObject object = jsonObject(answer);
    const QJsonObject data = object[QLatin1String("data")].toObject();
    const QJsonObject upload = object[QLatin1String("upload")].toObject();
    return {requireString(data, QLatin1String("id")), requireString(data, QLatin1String("share_url")),
            RemoteVideo::kUploading, size, chunkSizeFrom(upload[QLatin1String("chunk_size")])};
}

} // namespace zivra
