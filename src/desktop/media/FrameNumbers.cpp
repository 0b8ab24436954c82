#include "desktop/media/FrameNumbers.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace zivra::desktop {

namespace {

/// Reads and writes bits, the highest of a byte first. Beyond the end there are ones.
///
/// Does not know the bytes that keep start codes out of the data: there are none in what is read here, as
/// ones stand close together in it. That also holds for what is written, since numbers are short.
class Bits {
public:
    explicit Bits(std::span<const std::uint8_t> bytes, std::size_t position)
        : m_bytes(bytes),
          m_position(position)
    {
    }

    [[nodiscard]] std::size_t position() const { return m_position; }
    unsigned read(unsigned count)
    {
        unsigned value = 0;
        for (unsigned bit = 0; bit < count; ++bit, ++m_position) {
            const std::size_t byte = m_position / 8;
            const unsigned bits = byte < m_bytes.size() ? m_bytes[byte] : 0xff;
            value = value << 1 | (bits >> (7 - m_position % 8) & 1);
        }
        return value;
    }
    /// An Exp-Golomb code.
    unsigned readCode()
    {
        unsigned zeros = 0;
        while (read(1) == 0) {
            ++zeros;
        }
        return (1U << zeros) - 1 + read(zeros);
    }

private:
    std::span<const std::uint8_t> m_bytes;
    std::size_t m_position;
};

void write(std::span<std::uint8_t> bytes, std::size_t position, unsigned count, unsigned value)
{
    for (unsigned bit = 0; bit < count; ++bit, ++position) {
        const auto mask = static_cast<std::uint8_t>(0x80U >> position % 8);
        const bool isSet = (value >> (count - 1 - bit) & 1) != 0;
        auto &byte = bytes[position / 8];
        byte = static_cast<std::uint8_t>(isSet ? byte | mask : byte & ~mask);
    }
}

constexpr std::size_t kHeaderBits = 8;

} // namespace

FrameNumbers::FrameNumbers(std::span<const std::uint8_t> parameters)
{
    constexpr unsigned kMainProfile = 77;
    constexpr unsigned kDecodingOrder = 2;
    constexpr unsigned kMostBits = 8;
    Bits bits(parameters, kHeaderBits);
    const unsigned profile = bits.read(8);
    bits.read(16);   // constraints, level
    bits.readCode(); // the set's number
    const unsigned length = 4 + bits.readCode();
    const unsigned order = bits.readCode();
    if (profile == kMainProfile && order == kDecodingOrder && length <= kMostBits) {
        m_bits = length;
    }
}

void FrameNumbers::correct(std::span<std::uint8_t> picture, bool isKey)
{
    m_copies = isKey ? 0 : m_copies;
    if (m_copies > 0) {
        add(picture, m_copies);
    }
}

void FrameNumbers::advance(std::span<std::uint8_t> picture)
{
    ++m_copies;
    add(picture, 1);
}

void FrameNumbers::add(std::span<std::uint8_t> picture, unsigned count) const
{
    constexpr std::array<std::uint8_t, 3> kStartCode{0, 0, 1};
    constexpr unsigned kTypeMask = 0x1f;
    constexpr unsigned kSlice = 1;
    for (auto rest = picture; !rest.empty();) {
        const auto code = std::search(rest.begin(), rest.end(), kStartCode.begin(), kStartCode.end());
        rest = rest.subspan(static_cast<std::size_t>(code - rest.begin()));
        rest = rest.subspan(std::min(rest.size(), kStartCode.size()));
        if (!rest.empty() && (rest.front() & kTypeMask) == kSlice) {
            Bits bits(rest, kHeaderBits);
            bits.readCode(); // its first macroblock
            bits.readCode(); // its type
            bits.readCode(); // its parameter set
            const std::size_t position = bits.position();
            write(rest, position, m_bits, bits.read(m_bits) + count);
        }
    }
}

} // namespace zivra::desktop
