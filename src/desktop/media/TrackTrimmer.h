#pragma once

#include "desktop/media/FFmpegHandles.h"
#include "platform/MovieAsset.h"

#include <functional>
#include <vector>

namespace zivra::desktop {

/// Chooses the packets that one track of a trimmed movie needs, and moves their times so that the chosen
/// stretch starts at zero. Packets with negative times are needed for decoding and never shown.
class TrackTrimmer {
public:
    /// Takes packets in decoding order, times in the source's time base.
    using PacketSink = std::function<void(PacketPtr)>;

    TrackTrimmer(const AVStream &source, const MediaTimeRange &range, PacketSink sink);

    /// Takes the packet's content. In decoding order, from a key frame before the stretch on.
    void add(AVPacket &packet);
    /// After the last packet.
    void finish();
    /// Whether no later packet is of any use.
    [[nodiscard]] bool isDone() const { return m_done; }

private:
    void addSound(PacketPtr packet);
    void addReorderedPicture(PacketPtr packet);
    void addPicture(PacketPtr packet);
    void showLastOfLeadIn();
    void hold(PacketPtr packet);
    void pass(PacketPtr packet);

    const bool m_isSound;
    const bool m_isReordered; ///< has B-frames
    const std::int64_t m_start;
    const std::int64_t m_end;
    const PacketSink m_sink;
    std::vector<PacketPtr> m_leadIn; ///< pictures from a key frame on that are not later than the start
    PacketPtr m_held;                ///< a picture that is shown until the next one
    bool m_done = false;
};

} // namespace zivra::desktop
