#include "desktop/media/FragmentedMovie.h"

#include "desktop/media/MovieBoxes.h"

#include <sys/stat.h>
#include <unistd.h>

#include <array>

namespace zivra::desktop {

namespace {

/// More than any index or head of a fragment of ours takes.
constexpr std::int64_t kMaxBoxSize = 64 << 20; // bytes

/// A box of the file's top level.
struct FileBox {
    std::uint32_t name;
    std::int64_t offset;
    std::int64_t size;
};

/// What a sample is like when the fragment does not say.
struct SampleDefaults {
    std::uint32_t duration = 0;
    std::uint32_t size = 0;
    std::uint32_t flags = 0;
};

std::optional<FileBox> boxAt(int file, std::int64_t offset, std::int64_t fileSize)
{
    std::array<std::uint8_t, 16> head{};
    if (pread(file, head.data(), head.size(), offset) < 8) {
        return std::nullopt;
    }
    BoxReader reader(head);
    std::int64_t size = reader.u32();
    const std::uint32_t name = reader.u32();
    if (size == 1) {
        size = static_cast<std::int64_t>(reader.number(8));
    }
    const bool isWhole = size >= 8 && size <= fileSize - offset;
    return isWhole ? std::optional(FileBox{name, offset, size}) : std::nullopt;
}

std::vector<FileBox> topLevelBoxes(int file)
{
    struct stat status {};
    std::vector<FileBox> boxes;
    if (fstat(file, &status) != 0) {
        return boxes;
    }
    for (std::int64_t offset = 0; const auto box = boxAt(file, offset, status.st_size);) {
        boxes.push_back(*box);
        offset += box->size;
    }
    return boxes;
}

std::vector<std::uint8_t> contentOf(int file, const FileBox &box)
{
    if (box.size > kMaxBoxSize) {
        return {};
    }
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(box.size));
    const auto got = pread(file, bytes.data(), bytes.size(), box.offset);
    return got == box.size ? bytes : std::vector<std::uint8_t>();
}

std::map<std::uint32_t, SampleDefaults> readDefaults(std::span<const std::uint8_t> extension)
{
    std::map<std::uint32_t, SampleDefaults> defaults;
    for (const Box &box : boxesIn(extension)) {
        if (box.name == boxName("trex")) {
            BoxReader reader(box.content);
            reader.skip(4);
            SampleDefaults &track = defaults[reader.u32()];
            reader.skip(4);
            track.duration = reader.u32();
            track.size = reader.u32();
            track.flags = reader.u32();
        }
    }
    return defaults;
}

/// Lists the samples of the track runs in one fragment's part for one track.
class TrackFragment {
public:
    TrackFragment(FragmentedMovie &movie, const std::map<std::uint32_t, SampleDefaults> &defaults,
                  std::int64_t fragmentOffset)
        : m_movie(movie),
          m_trackDefaults(defaults),
          m_fragmentOffset(fragmentOffset)
    {
    }

    void read(std::span<const std::uint8_t> content)
    {
        for (const Box &box : boxesIn(content)) {
            if (box.name == boxName("tfhd")) {
                readHeader(BoxReader(box.content));
            } else if (box.name == boxName("tfdt")) {
                readDecodingTime(BoxReader(box.content));
            } else if (box.name == boxName("trun")) {
                readRun(BoxReader(box.content));
            }
        }
    }

private:
    void readHeader(BoxReader reader)
    {
        const std::uint32_t flags = reader.u32();
        const std::uint32_t track = reader.u32();
        const auto defaults = m_trackDefaults.find(track);
        m_defaults = defaults != m_trackDefaults.end() ? defaults->second : SampleDefaults();
        m_samples = &m_movie.tracks[track];
        m_base = (flags & 0x1) != 0 ? static_cast<std::int64_t>(reader.number(8)) : m_fragmentOffset;
        reader.skip((flags & 0x2) != 0 ? 4 : 0);
        m_defaults.duration = (flags & 0x8) != 0 ? reader.u32() : m_defaults.duration;
        m_defaults.size = (flags & 0x10) != 0 ? reader.u32() : m_defaults.size;
        m_defaults.flags = (flags & 0x20) != 0 ? reader.u32() : m_defaults.flags;
    }

    void readDecodingTime(BoxReader reader)
    {
        const std::uint8_t version = reader.u8();
        reader.skip(3);
        m_time = static_cast<std::int64_t>(reader.number(version == 1 ? 8 : 4));
    }

    void readRun(BoxReader reader)
    {
        if (m_samples == nullptr) {
            return;
        }
        const std::uint32_t flags = reader.u32() & 0xffffff;
        const std::uint32_t count = reader.u32();
        std::int64_t offset = m_base + ((flags & 0x1) != 0 ? static_cast<std::int32_t>(reader.u32()) : 0);
        const bool hasFirstFlags = (flags & 0x4) != 0;
        const std::uint32_t firstFlags = hasFirstFlags ? reader.u32() : 0;
        for (std::uint32_t index = 0; index < count; ++index) {
            const std::uint32_t duration = (flags & 0x100) != 0 ? reader.u32() : m_defaults.duration;
            const std::uint32_t size = (flags & 0x200) != 0 ? reader.u32() : m_defaults.size;
            std::uint32_t sampleFlags = (flags & 0x400) != 0 ? reader.u32() : m_defaults.flags;
            // Counted with a sign also in the version that has none: nothing is shown days after its time.
            const auto delay = (flags & 0x800) != 0 ? static_cast<std::int32_t>(reader.u32()) : 0;
            if (!reader.isWhole()) {
                return;
            }
            sampleFlags = index == 0 && hasFirstFlags ? firstFlags : sampleFlags;
            constexpr std::uint32_t kIsNoKeyFrame = 0x10000;
            m_samples->push_back(
                {offset, size, m_time, m_time + delay, duration, (sampleFlags & kIsNoKeyFrame) == 0});
            offset += size;
            m_time += duration;
        }
    }

    FragmentedMovie &m_movie;
    const std::map<std::uint32_t, SampleDefaults> &m_trackDefaults;
    const std::int64_t m_fragmentOffset;
    std::vector<IndexedSample> *m_samples = nullptr;
    SampleDefaults m_defaults;
    std::int64_t m_base = 0;
    std::int64_t m_time = 0;
};

} // namespace

std::optional<FragmentedMovie> readFragmentedMovie(int fileDescriptor)
{
    std::optional<FragmentedMovie> movie;
    std::map<std::uint32_t, SampleDefaults> defaults;
    const auto boxes = topLevelBoxes(fileDescriptor);
    for (std::size_t index = 0; index < boxes.size(); ++index) {
        const FileBox &box = boxes[index];
        if (box.name == boxName("moov") && !movie) {
            movie = FragmentedMovie{box.offset, contentOf(fileDescriptor, box), {}};
            const auto moov = findBox(movie->index, box.name);
            const auto extension = moov ? findBox(moov->content, boxName("mvex")) : std::nullopt;
            if (!extension) {
                return std::nullopt;
            }
            defaults = readDefaults(extension->content);
        } else if (box.name == boxName("moof") && movie) {
            // The media that belongs to it follows; without it the fragment is not whole.
            if (index + 1 == boxes.size() || boxes[index + 1].name != boxName("mdat")) {
                break;
            }
            const auto bytes = contentOf(fileDescriptor, box);
            const auto fragment = findBox(bytes, box.name);
            for (const Box &part : boxesIn(fragment ? fragment->content : std::span<const std::uint8_t>())) {
                if (part.name == boxName("traf")) {
                    TrackFragment(*movie, defaults, box.offset).read(part.content);
                }
            }
        }
    }
    return movie;
}

} // namespace zivra::desktop
