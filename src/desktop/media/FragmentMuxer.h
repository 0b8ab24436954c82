#pragma once

#include "desktop/media/FFmpegHandles.h"
#include "desktop/media/SidePackets.h"
#include "platform/MovieWriter.h"

#include <chrono>
#include <optional>
#include <vector>

namespace zivra::desktop {

class FileSink;

/// Puts the packets of all tracks into a fragmented movie file (ISO/IEC 14496-12, movie fragments):
/// after each `flush()` the file plays as far as it goes. Used by one thread at a time. Failed writes
/// show in the sink; everything else that fails throws `PlatformError`.
class FragmentMuxer {
public:
    using Clock = std::chrono::steady_clock;

    FragmentMuxer(FileSink &sink, MovieFileType type);

    /// `timeBase` is that of the packets to come. Returns the track's number, from 0.
    int addTrack(const AVCodecParameters &parameters, AVRational timeBase,
                 const std::optional<TrackTransform> &transform);
    /// Makes room beside the tracks for the mix of all sound, AAC, of which there are tracks. After these.
    void addMix(const AVCodecParameters &parameters, AVRational timeBase);
    /// After the last track.
    void start();

    /// Times are in the track's time base, in decoding order. A packet of sound has its duration. A picture
    /// lasts until the next one, whatever duration it comes with (that of a copied one is a guess): it waits
    /// for that, or for a flush that finds it old enough. What primes the decoder goes beside the fragments:
    /// they have no sure way to hide it.
    void write(int track, PacketPtr packet);
    /// A packet of the mix.
    void writeMix(const AVPacket &packet);
    /// Makes everything written so far a fragment, hands it to the kernel and lets it get to the disk.
    void flush();
    /// The same for the packets that still wait; the file is complete then.
    void finish();

    [[nodiscard]] bool hasPackets(int track) const;
    /// Since when the oldest picture waits for the next one, if one does.
    [[nodiscard]] std::optional<Clock::time_point> waitingSince() const;
    [[nodiscard]] bool hasFragment() const { return m_hasFragment; }
    /// Since the last flush, in bytes.
    [[nodiscard]] std::int64_t unflushedSize() const { return m_unflushedSize; }
    /// Where the latest packet of all tracks ends, on the movie's timeline.
    [[nodiscard]] MediaTime end() const;

private:
    struct Track {
        AVRational timeBase;
        bool showsPictures;
        PacketPtr waiting; ///< its duration is not known yet
        Clock::time_point waitingSince;
        bool startsFragment = true;
        bool empty = true;
        std::int64_t end = 0;    ///< decoding time at which the last written packet ends
        std::int64_t latest = 0; ///< presentation time at which a packet ends at the latest
    };

    void releaseWaiting(Track &track, std::int64_t duration);
    void mux(Track &track, PacketPtr packet);
    void writeBeside(std::uint32_t track, const AVPacket &packet);
    void flushFragment();
    void flushSidePackets();

    FileSink &m_sink;
    const MovieFileType m_type;
    OutputContextPtr m_context;
    std::vector<Track> m_tracks;
    SidePackets m_sidePackets;
    std::int64_t m_unflushedSize = 0;
    bool m_hasFragment = false;
};

} // namespace zivra::desktop
