#include "cloud/MovieFacts.h"

#include <QCoroFuture>

#include <cstdlib>
#include <exception>
#include <memory>

namespace zivra {

namespace {

constexpr MediaTime kThumbnailTime = MediaTime::fromSeconds(1);
constexpr QSize kThumbnailSize(1280, 1280);
constexpr double kThumbnailQuality = 0.8;

/// The outline of the turned picture.
QSize displaySize(const MovieTrack &track)
{
    constexpr std::int64_t kOne = 1 << 16;
    const TrackTransform matrix =
        track.preferredTransform.value_or(TrackTransform{kOne, 0, 0, 0, kOne, 0, 0, 0, 1 << 30});
    const auto part = [](std::int32_t factor, int length) { return std::abs(std::int64_t{factor} * length); };
    const int width = track.naturalSize.width();
    const int height = track.naturalSize.height();
    return {static_cast<int>((part(matrix[0], width) + part(matrix[3], height)) / kOne),
            static_cast<int>((part(matrix[1], width) + part(matrix[4], height)) / kOne)};
}

} // namespace

QCoro::Task<MovieFacts> movieFacts(QUrl file, MovieServices &movies)
{
    MovieFacts facts;
    try {
        const std::shared_ptr<const MovieAsset> asset = co_await movies.openAsset(file);
        if (asset->duration().isValid()) {
            facts.duration = asset->duration().seconds();
        }
        const std::vector<MovieTrack> tracks = asset->tracks(MediaType::Video);
        if (!tracks.empty() && !tracks.front().naturalSize.isEmpty()) {
            facts.size = displaySize(tracks.front());
        }
        auto thumbnail = co_await movies.stillJPEG(asset, kThumbnailTime, kThumbnailSize, kThumbnailQuality);
        facts.thumbnail = thumbnail;
    } catch (const std::exception &) {
        // What was found so far is told.
    }
    co_return facts;
}

} // namespace zivra
