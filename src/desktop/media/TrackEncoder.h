#pragma once

#include "desktop/media/FFmpegHandles.h"
#include "platform/MovieWriter.h"

#include <functional>
#include <optional>
#include <span>

namespace zivra::desktop {

/// One track's way from samples to packets. Made, opened and asked what it accepts by the writer's
/// caller; after that `encode` and what follows run on the writer's thread alone. Throws `PlatformError`.
class TrackEncoder {
public:
    /// Takes the packets in decoding order, in `timeBase()`. No duration: until the next packet. Those that
    /// only prime the decoder, before the first sample that is heard, have AV_PKT_FLAG_DISCARD.
    using PacketSink = std::function<void(PacketPtr)>;
    /// Takes interleaved sound, from the movie's start on without a break.
    using SoundSink = std::function<void(std::span<const float>, const AudioFormat &)>;

    virtual ~TrackEncoder() = default;

    virtual void open(bool realTime, PacketSink sink) = 0;
    [[nodiscard]] virtual const AVCodecParameters &parameters() const = 0;
    [[nodiscard]] virtual AVRational timeBase() const = 0;
    [[nodiscard]] virtual std::optional<TrackTransform> transform() const { return std::nullopt; }

    /// Lets `sink` hear everything that is encoded from now on; false when there is no sound to hear.
    virtual bool shareSound(SoundSink) { return false; }

    /// May be called from any thread.
    [[nodiscard]] virtual bool accepts(const MediaSample &sample) const = 0;

    /// `time` is the sample's presentation time on the movie's timeline.
    virtual void encode(const MediaSample &sample, MediaTime time) = 0;
    /// Whether it has got any sample that lies in the movie.
    [[nodiscard]] virtual bool hasContent() const = 0;
    /// Lets the track go on until `time` without content, if its medium has such a thing and it is not there
    /// yet.
    virtual void fillUntil(MediaTime time) = 0;
    /// Gives out what is still inside.
    virtual void finish() = 0;
};

/// Sends one frame, or the end of all when null, and passes on the packets that come out.
void encodeFrame(AVCodecContext &codec, const AVFrame *frame, const TrackEncoder::PacketSink &sink);

} // namespace zivra::desktop
