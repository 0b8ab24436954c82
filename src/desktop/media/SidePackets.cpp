#include "desktop/media/SidePackets.h"

#include "desktop/media/FileBoxes.h"
#include "desktop/media/MovieBoxes.h"

#include <algorithm>
#include <array>

namespace zivra::desktop {

namespace {

/// Chosen at random, once and for all.
constexpr std::array<std::uint8_t, 16> kType{0x5b, 0xd1, 0x0e, 0x8c, 0x27, 0x63, 0x4f, 0x7a,
                                             0x9d, 0x34, 0xc6, 0x1f, 0x80, 0xe2, 0x4b, 0xa9};
constexpr std::int64_t kHeadSize = kType.size() + 12; // bytes
constexpr std::int64_t kEntrySize = 8;                // bytes

} // namespace

void SidePackets::add(SideKind kind, std::uint32_t track, std::span<const std::uint8_t> packet,
                      std::int64_t duration)
{
    auto &content = m_contents[{kind, track}];
    content.sizesAndDurations.emplace_back(packet.size(), duration);
    content.data.insert(content.data.end(), packet.begin(), packet.end());
}

std::vector<std::uint8_t> SidePackets::takeBoxes()
{
    BoxWriter writer;
    for (const auto &each : std::exchange(m_contents, {})) {
        writer.box(boxName("uuid"), [&] {
            const auto &[key, content] = each;
            writer.copy(kType);
            writer.u32(static_cast<std::uint32_t>(key.first));
            writer.u32(key.second);
            writer.u32(content.sizesAndDurations.size());
            for (const auto &[size, duration] : content.sizesAndDurations) {
                writer.u32(size);
                writer.u32(static_cast<std::uint64_t>(duration));
            }
            writer.copy(content.data);
        });
    }
    return writer.bytes();
}

std::optional<SideBox> readSideBox(FileView &file, const FileBox &box)
{
    const std::int64_t start = box.offset + box.headerSize;
    if (box.name != boxName("uuid") || box.end() - start < kHeadSize) {
        return std::nullopt;
    }
    const auto head = file.bytes(start, kHeadSize);
    if (head.empty() || !std::equal(kType.begin(), kType.end(), head.begin())) {
        return std::nullopt;
    }
    BoxReader reader(head);
    reader.skip(kType.size());
    SideBox side{.kind = static_cast<SideKind>(reader.u32()), .track = reader.u32(), .packets = {}};
    const std::int64_t tableSize = reader.u32() * kEntrySize;
    std::int64_t offset = start + kHeadSize + tableSize;
    if (offset > box.end()) {
        return std::nullopt;
    }
    const auto table = file.bytes(start + kHeadSize, tableSize);
    BoxReader entries(table);
    for (std::size_t index = 0; index < table.size() / kEntrySize; ++index) {
        IndexedSample packet{.offset = offset, .size = entries.u32(), .duration = entries.u32()};
        offset += packet.size;
        if (offset > box.end()) {
            return std::nullopt;
        }
        side.packets.push_back(packet);
    }
    return side;
}

} // namespace zivra::desktop
