#include "desktop/media/FileBoxes.h"

#include "desktop/media/MovieBoxes.h"

#include <sys/stat.h>
#include <unistd.h>

#include <array>

namespace zivra::desktop {

std::optional<FileBox> boxAt(int fileDescriptor, std::int64_t offset, std::int64_t fileSize)
{
    std::array<std::uint8_t, 16> head{};
    if (pread(fileDescriptor, head.data(), head.size(), offset) < 8) {
        return std::nullopt;
    }
    BoxReader reader(head);
    FileBox box{.offset = offset};
    box.size = reader.u32();
    box.name = reader.u32();
    if (box.size == 1) {
        box.size = static_cast<std::int64_t>(reader.number(8));
        box.headerSize = 16;
    }
    const bool isWhole = box.size >= box.headerSize && box.size <= fileSize - offset;
    return isWhole ? std::optional(box) : std::nullopt;
}

std::vector<FileBox> topLevelBoxes(int fileDescriptor)
{
    struct stat status {};
    std::vector<FileBox> boxes;
    if (fstat(fileDescriptor, &status) != 0) {
        return boxes;
    }
    for (std::int64_t offset = 0; const auto box = boxAt(fileDescriptor, offset, status.st_size);) {
        boxes.push_back(*box);
        offset = box->end();
    }
    return boxes;
}

std::vector<std::uint8_t> bytesAt(int fileDescriptor, std::int64_t offset, std::int64_t size)
{
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(size));
    const auto got = pread(fileDescriptor, bytes.data(), bytes.size(), offset);
    return got == size ? bytes : std::vector<std::uint8_t>();
}

} // namespace zivra::desktop
