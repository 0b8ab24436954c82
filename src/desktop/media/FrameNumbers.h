#pragma once

#include <cstdint>
#include <span>

namespace zivra::desktop {

/// Numbers the pictures of an H.264 stream anew, so that copies of a picture fit in that the encoder does not
/// know of. A picture in which every macroblock is skipped shows the one before it once more, and so does its
/// copy: all that tells them apart is the frame number.
///
/// For streams in which each picture is a reference and is shown in the order of decoding (picture order
/// count type 2), in the main profile. The syntax is that of ITU-T H.264, 7.3.2.1 and 7.3.3. Packets are
/// whole pictures with start codes (annex B).
class FrameNumbers {
public:
    /// `parameters`: the sequence parameter set, from its NAL unit's header byte on.
    explicit FrameNumbers(std::span<const std::uint8_t> parameters);

    /// Whether this is such a stream. Otherwise nothing may be copied.
    [[nodiscard]] bool canCopy() const { return m_bits > 0; }

    /// Of a picture from the encoder: moves its number on behind the copies made since the last key frame.
    void correct(std::span<std::uint8_t> picture, bool isKey);
    /// Turns the newest picture into a copy that follows it.
    void advance(std::span<std::uint8_t> picture);

private:
    void add(std::span<std::uint8_t> picture, unsigned count) const;

    unsigned m_bits = 0;   ///< of a frame number
    unsigned m_copies = 0; ///< since the last key frame
};

} // namespace zivra::desktop
