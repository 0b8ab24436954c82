#include "desktop/media/FragmentedMovie.h"

#include "desktop/media/FileBoxes.h"
#include "desktop/media/MovieBoxes.h"
#include "desktop/media/SidePackets.h"

#include <algorithm>
#include <utility>

namespace zivra::desktop {

namespace {

/// More than any index or head of a fragment of ours takes.
constexpr std::int64_t kMaxBoxSize = 64 << 20; // bytes

/// What a sample is like when the fragment does not say.
struct SampleDefaults {
    std::uint32_t duration = 0;
    std::uint32_t size = 0;
    std::uint32_t flags = 0;
};

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
            m_samples->push_back({.offset = offset,
                                  .size = size,
                                  .decodingTime = m_time,
                                  .presentationTime = m_time + delay,
                                  .duration = duration,
                                  .isKeyFrame = (sampleFlags & kIsNoKeyFrame) == 0});
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

/// Reads box after box of a file.
class FileReader {
public:
    explicit FileReader(int file) : m_file(file) {}

    std::optional<FragmentedMovie> read()
    {
        std::optional<FileBox> box = m_file.box(0);
        while (box && box->name != boxName("moov")) {
            box = m_file.box(box->end());
        }
        if (!box || !readIndex(*box)) {
            return std::nullopt;
        }
        for (box = m_file.box(box->end()); box; box = m_file.box(box->end())) {
            if (box->name == boxName("moof")) {
                // The media that belongs to it follows; without it the fragment is not whole.
                const auto media = m_file.box(box->end());
                if (!media || media->name != boxName("mdat")) {
                    break;
                }
                readFragment(*box);
            } else if (const auto side = readSideBox(m_file, *box)) {
                addSide(*side);
            }
        }
        for (const auto &[track, samples] : m_priming) {
            prime(m_movie.tracks[track], samples);
        }
        return std::move(m_movie);
    }

private:
    std::vector<std::uint8_t> contentOf(const FileBox &box)
    {
        return box.size <= kMaxBoxSize ? m_file.bytes(box.offset, box.size) : std::vector<std::uint8_t>();
    }

    /// False for that of a movie without fragments.
    bool readIndex(const FileBox &box)
    {
        m_movie.indexOffset = box.offset;
        m_movie.index = contentOf(box);
        const auto moov = findBox(m_movie.index, box.name);
        const auto extension = moov ? findBox(moov->content, boxName("mvex")) : std::nullopt;
        m_defaults = readDefaults(extension ? extension->content : std::span<const std::uint8_t>());
        return extension.has_value();
    }

    void readFragment(const FileBox &box)
    {
        const auto bytes = contentOf(box);
        const auto fragment = findBox(bytes, box.name);
        for (const Box &part : boxesIn(fragment ? fragment->content : std::span<const std::uint8_t>())) {
            if (part.name == boxName("traf")) {
                TrackFragment(m_movie, m_defaults, box.offset).read(part.content);
            }
        }
    }

    void addSide(const SideBox &side)
    {
        if (side.kind == SideKind::Header && !side.packets.empty()) {
            m_movie.mixHeader = m_file.bytes(side.packets[0].offset, side.packets[0].size);
        } else if (side.kind == SideKind::Priming) {
            auto &priming = m_priming[side.track];
            priming.insert(priming.end(), side.packets.begin(), side.packets.end());
        } else if (side.kind == SideKind::Samples) {
            auto &samples = m_movie.tracks[side.track];
            for (IndexedSample packet : side.packets) {
                packet.decodingTime =
                    samples.empty() ? 0 : samples.back().decodingTime + samples.back().duration;
                packet.presentationTime = packet.decodingTime;
                samples.push_back(packet);
            }
        }
    }

    /// Puts the priming in front of the first sample.
    static void prime(std::vector<IndexedSample> &samples, std::vector<IndexedSample> priming)
    {
        if (samples.empty()) {
            return;
        }
        std::int64_t time = samples.front().decodingTime;
        for (auto packet = priming.rbegin(); packet != priming.rend(); ++packet) {
            time -= packet->duration;
            packet->decodingTime = time;
            packet->presentationTime = time;
            packet->isPriming = true;
        }
        samples.insert(samples.begin(), priming.begin(), priming.end());
    }

    FileView m_file;
    FragmentedMovie m_movie;
    std::map<std::uint32_t, SampleDefaults> m_defaults;
    std::map<std::uint32_t, std::vector<IndexedSample>> m_priming;
};

} // namespace

std::optional<FragmentedMovie> readFragmentedMovie(int fileDescriptor)
{
    return FileReader(fileDescriptor).read();
}

} // namespace zivra::desktop
