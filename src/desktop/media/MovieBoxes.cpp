#include "desktop/media/MovieBoxes.h"

#include <algorithm>

namespace zivra::desktop {

std::vector<Box> boxesIn(std::span<const std::uint8_t> bytes)
{
    constexpr std::size_t kHeader = 8;
    std::vector<Box> boxes;
    while (bytes.size() >= kHeader) {
        BoxReader reader(bytes);
        const std::size_t size = reader.u32();
        const std::uint32_t name = reader.u32();
        if (size < kHeader || size > bytes.size()) {
            break; // also the sizes that stand for larger boxes: no index has such
        }
        boxes.push_back({name, bytes.first(size), bytes.first(size).subspan(kHeader)});
        bytes = bytes.subspan(size);
    }
    return boxes;
}

std::optional<Box> findBox(std::span<const std::uint8_t> bytes, std::uint32_t name)
{
    const auto boxes = boxesIn(bytes);
    const auto found = std::ranges::find(boxes, name, &Box::name);
    return found != boxes.end() ? std::optional(*found) : std::nullopt;
}

void BoxWriter::number(std::uint64_t value, int size)
{
    for (int shift = 8 * (size - 1); shift >= 0; shift -= 8) {
        m_bytes.push_back(static_cast<std::uint8_t>(value >> shift));
    }
}

void BoxWriter::putSize(std::size_t start)
{
    const std::size_t size = m_bytes.size() - start;
    for (std::size_t index = 0; index < 4; ++index) {
        m_bytes[start + index] = static_cast<std::uint8_t>(size >> (8 * (3 - index)));
    }
}

} // namespace zivra::desktop
