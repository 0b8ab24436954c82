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

/// Reads small pieces of a file, most of which lie next to each other. It does not notice changes.
class FileView {
public:
    /// The file must stay open as long as this lives.
    explicit FileView(int fileDescriptor);

    [[nodiscard]] std::int64_t fileSize() const { return m_fileSize; }
    /// Empty when not all of it can be read.
    [[nodiscard]] std::vector<std::uint8_t> bytes(std::int64_t offset, std::int64_t size);
    /// The box at `offset`, if it is whole.
    [[nodiscard]] std::optional<FileBox> box(std::int64_t offset);

private:
    const int m_descriptor;
    std::int64_t m_fileSize = 0;
    std::int64_t m_start = 0;           ///< where in the file the window is
    std::vector<std::uint8_t> m_window; ///< what was read at once
};

/// The boxes that the file consists of, as far as they are whole.
[[nodiscard]] std::vector<FileBox> topLevelBoxes(FileView &file);

} // namespace zivra::desktop
