#include "desktop/media/PacketCopier.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace zivra::desktop {

PacketCopier::PacketCopier(std::shared_ptr<const EncodedTrackFormat> format,
                           const std::optional<TrackTransform> &transform)
    : m_format(std::move(format)),
      m_transform(transform)
{
}

void PacketCopier::open(bool, PacketSink sink)
{
    m_sink = std::move(sink);
}

bool PacketCopier::accepts(const MediaSample &sample) const
{
    return sample.encodedPacket() != nullptr;
}

void PacketCopier::encode(const MediaSample &sample, MediaTime time)
{
    const auto source = sample.encodedPacket();
    auto packet = makePacket();
    if (av_new_packet(packet.get(), static_cast<int>(source->data.size())) < 0) {
        throw std::bad_alloc();
    }
    std::copy(source->data.begin(), source->data.end(), packet->data);
    if (source->isKeyFrame) {
        packet->flags |= AV_PKT_FLAG_KEY;
    }
    const auto &timing = sample.timing();
    const auto reorder = timing.decode.isValid() ? timing.presentation - timing.decode : MediaTime::zero();
    packet->pts = ticksFrom(time, timeBase());
    packet->dts = ticksFrom(time - reorder, timeBase());
    packet->duration = timing.duration.isValid() ? ticksFrom(timing.duration, timeBase()) : 0;
    m_hasContent = true;
    m_sink(std::move(packet));
}

void PacketCopier::fillUntil(MediaTime)
{
    // Nothing is made up for a track that is only copied.
}

void PacketCopier::finish() {}

} // namespace zivra::desktop
