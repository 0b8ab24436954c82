#pragma once

#include "desktop/media/FFmpegHandles.h"
#include "desktop/media/SoundTimeline.h"

#include <span>

namespace zivra::desktop {

/// One sound track of a movie file, decoded onto an unbroken timeline that starts with the movie.
class TrackDecoder {
public:
    /// Throws `PlatformError`, as does reading.
    TrackDecoder(const QString &path, int track, const AudioFormat &format);

    /// Decodes until so many frames can be read or the track is at its end, and returns how many can.
    std::int64_t prepare(std::int64_t frames);
    /// Adds what is at most prepared to `sum`, interleaved.
    void addTo(std::span<float> sum);

private:
    void decodeNextPacket();
    void receiveFrames();
    void addFrame();

    const QString m_path;
    const int m_track;
    InputContextPtr m_input;
    CodecContextPtr m_decoder;
    PacketPtr m_packet;
    FramePtr m_frame;
    SoundTimeline m_timeline;
    std::vector<float> m_scratch;
    bool m_atEnd = false;
};

} // namespace zivra::desktop
