#pragma once

#include "desktop/media/EncodedTrackFormat.h"
#include "desktop/media/TrackEncoder.h"

namespace zivra::desktop {

/// Passes packets of an existing track through as they are.
class PacketCopier final : public TrackEncoder {
public:
    PacketCopier(std::shared_ptr<const EncodedTrackFormat> format,
                 const std::optional<TrackTransform> &transform);

    void open(bool realTime, PacketSink sink) override;
    [[nodiscard]] const AVCodecParameters &parameters() const override { return m_format->parameters(); }
    [[nodiscard]] AVRational timeBase() const override { return m_format->timeBase(); }
    [[nodiscard]] std::optional<TrackTransform> transform() const override { return m_transform; }
    [[nodiscard]] bool accepts(const MediaSample &sample) const override;
    void encode(const MediaSample &sample, MediaTime time) override;
    [[nodiscard]] bool hasContent() const override { return m_hasContent; }
    void fillUntil(MediaTime time) override;
    void finish() override;

private:
    const std::shared_ptr<const EncodedTrackFormat> m_format;
    const std::optional<TrackTransform> m_transform;
    PacketSink m_sink;
    bool m_hasContent = false;
};

} // namespace zivra::desktop
