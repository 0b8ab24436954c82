#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace zivra::desktop {

/// The name of a box, such as `boxName("moov")`: four characters as the number they are in the file.
constexpr std::uint32_t boxName(std::string_view text)
{
    std::uint32_t name = 0;
    for (const char letter : text) {
        name = name << 8 | static_cast<unsigned char>(letter);
    }
    return name;
}

/// Reads the big-endian numbers of a box one after the other. Beyond the end all are 0 and `isWhole()` is
/// false from then on.
class BoxReader {
public:
    explicit BoxReader(std::span<const std::uint8_t> bytes) : m_bytes(bytes) {}

    [[nodiscard]] std::uint64_t number(int size)
    {
        std::uint64_t value = 0;
        for (int index = 0; index < size; ++index) {
            value = value << 8 | byte();
        }
        return value;
    }
    [[nodiscard]] std::uint8_t u8() { return static_cast<std::uint8_t>(number(1)); }
    [[nodiscard]] std::uint32_t u32() { return static_cast<std::uint32_t>(number(4)); }
    void skip(std::size_t count) { m_position += count; }

    [[nodiscard]] bool isWhole() const { return m_position <= m_bytes.size(); }

private:
    std::uint8_t byte()
    {
        const std::uint8_t value = m_position < m_bytes.size() ? m_bytes[m_position] : 0;
        ++m_position;
        return value;
    }

    std::span<const std::uint8_t> m_bytes;
    std::size_t m_position = 0;
};

/// A box in memory (ISO/IEC 14496-12, 4.2).
struct Box {
    std::uint32_t name = 0;
    std::span<const std::uint8_t> all;     ///< with its header
    std::span<const std::uint8_t> content; ///< without it
};

/// The boxes that stand one after the other in `bytes`, as far as they are whole.
[[nodiscard]] std::vector<Box> boxesIn(std::span<const std::uint8_t> bytes);
/// The first one of that name.
[[nodiscard]] std::optional<Box> findBox(std::span<const std::uint8_t> bytes, std::uint32_t name);

/// Writes boxes into memory.
class BoxWriter {
public:
    [[nodiscard]] const std::vector<std::uint8_t> &bytes() const { return m_bytes; }

    void number(std::uint64_t value, int size);
    void u32(std::uint64_t value) { number(value, 4); }
    void copy(std::span<const std::uint8_t> bytes)
    {
        m_bytes.insert(m_bytes.end(), bytes.begin(), bytes.end());
    }

    /// Writes a box with what `content` writes.
    template <typename Content>
    void box(std::uint32_t name, Content content)
    {
        const std::size_t start = m_bytes.size();
        u32(0);
        u32(name);
        content();
        putSize(start);
    }

private:
    void putSize(std::size_t start);

    std::vector<std::uint8_t> m_bytes;
};

} // namespace zivra::desktop
