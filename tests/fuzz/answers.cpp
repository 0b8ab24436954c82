#include "cloud/ActivityFeed.h"
#include "cloud/CloudAPI.h"
#include "cloud/CloudError.h"
#include "cloud/RemoteVideo.h"
#include "require.h"

using namespace zivra;

/// Every way in which an answer of the cloud server is read.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray answer(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    const std::optional<QString> message = CloudAPI::message(answer);
    require(!CloudAPI::message({}) && (!message || size > 2));
    if (const auto feed = readActivityFeed(answer)) {
        for (const Activity &activity : feed->activities) {
            require(!activity.notification.title.isEmpty());
        }
    }
    try {
        const RemoteVideo video = createdVideo(answer, 1);
        require(video.chunkSize > 0 && video.chunkSize <= 256 << 20 && !video.isReady());
    } catch (const CloudError &error) {
        require(!userText(error).isEmpty());
    } catch (const JsonError &error) {
        require(!userText(error).isEmpty());
    }
    return 0;
}
