#pragma once

#include "desktop/media/FFmpegHandles.h"
#include "platform/MovieWriter.h"

namespace zivra::desktop {

/// A track format as libavformat knows it. Immutable.
class EncodedTrackFormat final : public TrackFormat {
public:
    /// `timeBase` is the one the file stores the track's times in: rounding to it restores them exactly.
    EncodedTrackFormat(const AVCodecParameters &parameters, AVRational timeBase);

    [[nodiscard]] const AVCodecParameters &parameters() const { return *m_parameters; }
    [[nodiscard]] AVRational timeBase() const { return m_timeBase; }

private:
    CodecParametersPtr m_parameters;
    AVRational m_timeBase;
};

} // namespace zivra::desktop
