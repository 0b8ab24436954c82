#pragma once

#include "platform/MovieAsset.h"

namespace zivra::desktop {

class FFmpegMovieAsset final : public MovieAsset {
public:
    /// Reads the file's index, which may take a while; throws `PlatformError`.
    explicit FFmpegMovieAsset(const QUrl &url);

    [[nodiscard]] QUrl url() const override { return m_url; }
    [[nodiscard]] MediaTime duration() const override { return m_duration; }
    [[nodiscard]] std::vector<MovieTrack> tracks(MediaType type) const override;

private:
    const QUrl m_url;
    MediaTime m_duration = MediaTime::zero();
    std::vector<MovieTrack> m_tracks;
};

} // namespace zivra::desktop
