#include "cloud/UploadIndex.h"
#include "require.h"

using namespace zivra;

/// What is read from the index is written as it is.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray json(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    const RemoteVideos videos = remoteVideosFromJson(json);
    require(remoteVideosFromJson(toJson(videos)) == videos);
    return 0;
}
