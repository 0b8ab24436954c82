#pragma once

#include "platform/MediaTime.h"

#include <QRect>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <variant>
#include <vector>

namespace zivra {

enum class MediaType { Video, Audio };

/// What a picture source says of a frame: only complete frames carry a new picture to be recorded.
enum class FrameStatus { Complete, Idle, Blank, Suspended, Started, Stopped };

/// How sound is laid out: samples are 32-bit floats, interleaved, nominally within -1 to 1.
struct AudioFormat {
    double sampleRate = 48000; ///< frames a second
    int channels = 2;

    friend bool operator==(const AudioFormat &, const AudioFormat &) = default;
};

/// One picture in planar YUV 4:2:0, 8 bits, limited range, converted from sRGB with the BT.601 matrix
/// (what libyuv's ARGBToI420 computes). Width and height are even.
///
/// Immutable once handed over, so it may be read on any thread. Dropping the last reference gives
/// the buffer back to whoever made it.
struct VideoFrame {
    struct Plane {
        const std::uint8_t *data = nullptr; ///< owned by `storage`
        int stride = 0;                     ///< bytes from one row to the next
    };

    int width = 0;               ///< pixels
    int height = 0;              ///< pixels
    std::array<Plane, 3> planes; ///< Y, U, V; U and V have half the width and height
    std::shared_ptr<const void> storage;
    /// Counts the frames of a stream, from 1; 0: not counted.
    std::uint64_t number = 0;
    /// What differs from the frame before in the same stream, the one with the number before, in pixels of
    /// this frame; absent when that is not known and anything may have changed.
    std::optional<std::vector<QRect>> changed;
};

/// A stretch of sound. Immutable once handed over.
struct AudioBlock {
    AudioFormat format;
    std::vector<float> samples; ///< interleaved, `frameCount() * format.channels` values

    [[nodiscard]] std::size_t frameCount() const
    {
        return format.channels > 0 ? samples.size() / static_cast<std::size_t>(format.channels) : 0;
    }
};

/// A piece of an encoded stream as it is stored in a movie file. Its meaning is given by the track
/// format it travels with. Immutable once handed over.
struct EncodedPacket {
    std::vector<std::uint8_t> data;
    bool isKeyFrame = true;
};

/// The times of a sample. `decode` is invalid where it equals the presentation time.
struct SampleTiming {
    MediaTime presentation;
    MediaTime decode;
    MediaTime duration;
};

/// One sample of a stream: a picture, a stretch of sound or an encoded packet, with its time. A value:
/// copies share the immutable data. A default-made sample is not valid.
class MediaSample {
public:
    using Data = std::variant<std::monostate, std::shared_ptr<const VideoFrame>,
                              std::shared_ptr<const AudioBlock>, std::shared_ptr<const EncodedPacket>>;

    MediaSample() = default;
    MediaSample(Data data, SampleTiming timing, std::optional<FrameStatus> status = std::nullopt)
        : m_data(std::move(data)),
          m_timing(timing),
          m_status(status)
    {
    }

    /// Has a presentation time. A frame that carries no picture (an idle one) is valid too.
    [[nodiscard]] bool isValid() const { return m_timing.presentation.isValid(); }
    [[nodiscard]] const SampleTiming &timing() const { return m_timing; }
    [[nodiscard]] MediaTime presentationTime() const { return m_timing.presentation; }
    /// Only frames of a capture have a status.
    [[nodiscard]] std::optional<FrameStatus> frameStatus() const { return m_status; }

    /// Each is null when the sample carries something else.
    [[nodiscard]] std::shared_ptr<const VideoFrame> videoFrame() const { return get<VideoFrame>(); }
    [[nodiscard]] std::shared_ptr<const AudioBlock> audioBlock() const { return get<AudioBlock>(); }
    [[nodiscard]] std::shared_ptr<const EncodedPacket> encodedPacket() const { return get<EncodedPacket>(); }

    /// The format of its sound; absent when it carries none.
    [[nodiscard]] std::optional<AudioFormat> audioFormat() const
    {
        const auto block = audioBlock();
        return block ? std::optional(block->format) : std::nullopt;
    }

    /// A copy that shares the data and has other times.
    [[nodiscard]] MediaSample withTiming(const SampleTiming &timing) const
    {
        return {m_data, timing, m_status};
    }

private:
    template <typename T>
    [[nodiscard]] std::shared_ptr<const T> get() const
    {
        const auto *held = std::get_if<std::shared_ptr<const T>>(&m_data);
        return held != nullptr ? *held : nullptr;
    }

    Data m_data;
    SampleTiming m_timing;
    std::optional<FrameStatus> m_status;
};

} // namespace zivra
