#pragma once

#include "desktop/media/ReaderOutput.h"
#include "desktop/media/TrackDecoder.h"

#include <memory>
#include <vector>

namespace zivra::desktop {

/// The sum of sound tracks, in blocks of about 20 ms.
class AudioMixOutput final : public ReaderOutput {
public:
    AudioMixOutput(ReaderProgress &progress, QString path, std::vector<int> tracks,
                   const AudioFormat &format);

    void open() override;

protected:
    std::optional<MediaSample> readNext() override;

private:
    const QString m_path;
    const std::vector<int> m_tracks;
    const AudioFormat m_format;
    std::vector<std::unique_ptr<TrackDecoder>> m_decoders;
    std::int64_t m_position = 0; ///< frames from the movie's start
};

} // namespace zivra::desktop
