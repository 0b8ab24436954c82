#include "desktop/media/FileBoxes.h"

#include "desktop/media/MovieBoxes.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

namespace zivra::desktop {

namespace {
/// The head of a fragment of ours and the header behind it.
constexpr std::int64_t kWindowSize = 4096; // bytes
} // namespace

FileView::FileView(int fileDescriptor) : m_descriptor(fileDescriptor)
{
    struct stat status {};
    m_fileSize = fstat(fileDescriptor, &status) == 0 ? status.st_size : 0;
}

std::vector<std::uint8_t> FileView::bytes(std::int64_t offset, std::int64_t size)
{
    const auto end = [this] { return m_start + static_cast<std::int64_t>(m_window.size()); };
    if (offset < m_start || offset + size > end()) {
        m_start = offset;
        m_window.resize(static_cast<std::size_t>(std::max(size, kWindowSize)));
        const auto got = pread(m_descriptor, m_window.data(), m_window.size(), offset);
        m_window.resize(static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
    }
    if (offset + size > end()) {
        return {};
    }
    const auto first = m_window.begin() + (offset - m_start);
    return {first, first + size};
}

std::optional<FileBox> FileView::box(std::int64_t offset)
{
    const auto head = bytes(offset, std::clamp<std::int64_t>(m_fileSize - offset, 0, 16));
    BoxReader reader(head);
    FileBox box{.offset = offset};
    box.size = reader.u32();
    box.name = reader.u32();
    if (box.size == 1) {
        box.size = static_cast<std::int64_t>(reader.number(8));
        box.headerSize = 16;
    }
    const bool isWhole = box.size >= box.headerSize && box.size <= m_fileSize - offset;
    return reader.isWhole() && isWhole ? std::optional(box) : std::nullopt;
}

std::vector<FileBox> topLevelBoxes(FileView &file)
{
    std::vector<FileBox> boxes;
    for (std::int64_t offset = 0; const auto box = file.box(offset);) {
        boxes.push_back(*box);
        offset = box->end();
    }
    return boxes;
}

} // namespace zivra::desktop
