#include "desktop/media/TrackTrimmer.h"

#include <algorithm>
#include <utility>

namespace zivra::desktop {

TrackTrimmer::TrackTrimmer(const AVStream &source, const MediaTimeRange &range, PacketSink sink)
    : m_isSound(source.codecpar->codec_type == AVMEDIA_TYPE_AUDIO),
      m_isReordered(source.codecpar->video_delay > 0),
      m_start(ticksFrom(range.start, source.time_base)),
      m_end(ticksFrom(range.start + range.duration, source.time_base)),
      m_sink(std::move(sink))
{
}

void TrackTrimmer::add(AVPacket &packet)
{
    auto taken = makePacket();
    av_packet_move_ref(taken.get(), &packet);
    if (m_isSound) {
        addSound(std::move(taken));
    } else if (m_isReordered) {
        addReorderedPicture(std::move(taken));
    } else {
        addPicture(std::move(taken));
    }
}

void TrackTrimmer::addSound(PacketPtr packet)
{
    if (packet->pts >= m_end) {
        finish();
    } else if (packet->pts + 2 * packet->duration > m_start) {
        // One packet more than is heard: the decoder needs its overlap.
        packet->duration = std::min(packet->duration, m_end - packet->pts);
        pass(std::move(packet));
    }
}

void TrackTrimmer::addReorderedPicture(PacketPtr packet)
{
    if (packet->dts >= m_end) {
        finish();
    } else {
        pass(std::move(packet));
    }
}

void TrackTrimmer::addPicture(PacketPtr packet)
{
    packet->dts = packet->pts;
    if (packet->pts >= m_end) {
        finish();
    } else if (packet->pts <= m_start) {
        if ((packet->flags & AV_PKT_FLAG_KEY) != 0) {
            m_leadIn.clear();
        }
        m_leadIn.push_back(std::move(packet));
    } else {
        showLastOfLeadIn();
        hold(std::move(packet));
    }
}

/// Players drop what was first shown before the start, also where it is still on the screen then: the
/// picture that is to be seen at the start has to begin there.
void TrackTrimmer::showLastOfLeadIn()
{
    if (m_leadIn.empty()) {
        return;
    }
    m_leadIn.back()->pts = m_start;
    m_leadIn.back()->dts = m_start;
    for (auto &packet : std::exchange(m_leadIn, {})) {
        hold(std::move(packet));
    }
}

void TrackTrimmer::hold(PacketPtr packet)
{
    if (m_held) {
        m_held->duration = packet->pts - m_held->pts;
        pass(std::move(m_held));
    }
    m_held = std::move(packet);
}

void TrackTrimmer::finish()
{
    if (std::exchange(m_done, true)) {
        return;
    }
    showLastOfLeadIn();
    if (m_held) {
        m_held->duration = m_end - m_held->pts;
        pass(std::move(m_held));
    }
}

void TrackTrimmer::pass(PacketPtr packet)
{
    packet->pts -= m_start;
    packet->dts -= m_start;
    m_sink(std::move(packet));
}

} // namespace zivra::desktop
