#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace zivra::desktop {

/// A box in a file (ISO/IEC 14496-12, 4.2).
struct FileBox {
    std::uint32_t name = 0;
    std::int64_t offset = 0;     ///< of its header in the file
    std::int64_t size = 0;       ///< bytes, with the header
    std::int64_t headerSize = 8; ///< bytes; 16 where the size takes 64 bits

    [[nodiscard]] std::int64_t end() const { return offset + size; }
};

/// The box at `offset`, if it ends before `fileSize`.
[[nodiscard]] std::optional<FileBox> boxAt(int fileDescriptor, std::int64_t offset, std::int64_t fileSize);

/// The boxes that the file consists of, as far as they are whole.
[[nodiscard]] std::vector<FileBox> topLevelBoxes(int fileDescriptor);

/// Empty when not all of it can be read.
[[nodiscard]] std::vector<std::uint8_t> bytesAt(int fileDescriptor, std::int64_t offset, std::int64_t size);

} // namespace zivra::desktop
