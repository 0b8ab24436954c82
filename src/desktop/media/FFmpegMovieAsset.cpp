#include "desktop/media/FFmpegMovieAsset.h"

#include "desktop/media/EncodedTrackFormat.h"
#include "desktop/media/MovieFile.h"

#include <algorithm>
#include <cstring>

namespace zivra::desktop {

namespace {

std::optional<TrackTransform> transformOf(const AVStream &stream)
{
    std::size_t size = 0;
    const auto *data = av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, &size);
    if (data == nullptr || size < sizeof(TrackTransform)) {
        return std::nullopt;
    }
    TrackTransform transform{};
    std::memcpy(transform.data(), data, sizeof(TrackTransform));
    return transform;
}

std::optional<MediaType> typeOf(const AVStream &stream)
{
    if ((stream.disposition & AV_DISPOSITION_ATTACHED_PIC) != 0) {
        return std::nullopt;
    }
    switch (stream.codecpar->codec_type) {
    case AVMEDIA_TYPE_VIDEO:
        return MediaType::Video;
    case AVMEDIA_TYPE_AUDIO:
        return MediaType::Audio;
    default:
        return std::nullopt;
    }
}

} // namespace

FFmpegMovieAsset::FFmpegMovieAsset(const QUrl &url) : m_url(url)
{
    const auto input = openMovieFile(url.toLocalFile());
    for (unsigned i = 0; i < input->nb_streams; ++i) {
        const auto &stream = *input->streams[i];
        const auto type = typeOf(stream);
        if (!type) {
            continue;
        }
        m_tracks.push_back(
            {.index = static_cast<int>(i),
             .type = *type,
             .formats = {std::make_shared<EncodedTrackFormat>(*stream.codecpar, stream.time_base)},
             .preferredTransform = transformOf(stream),
             .naturalSize = {stream.codecpar->width, stream.codecpar->height}});
        if (stream.start_time != AV_NOPTS_VALUE && stream.duration > 0) {
            m_duration =
                std::max(m_duration, timeFrom(stream.start_time + stream.duration, stream.time_base));
        }
    }
    if (m_duration == MediaTime::zero() && input->duration > 0) {
        m_duration = timeFrom(input->duration, AV_TIME_BASE_Q);
    }
}

std::vector<MovieTrack> FFmpegMovieAsset::tracks(MediaType type) const
{
    std::vector<MovieTrack> tracks;
    std::copy_if(m_tracks.begin(), m_tracks.end(), std::back_inserter(tracks),
                 [type](const MovieTrack &track) { return track.type == type; });
    return tracks;
}

} // namespace zivra::desktop
