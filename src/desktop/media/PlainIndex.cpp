#include "desktop/media/PlainIndex.h"

#include "desktop/media/MovieBoxes.h"
#include "desktop/media/SampleTable.h"
#include "desktop/media/SidePackets.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace zivra::desktop {

namespace {

/// Ticks a second of the movie's own timeline. That of the pictures, so that their times are exact on it.
constexpr std::uint32_t kMovieScale = 90'000;

/// The parts of a header that depend on its version: with 64-bit times, or with 32-bit ones.
struct HeaderLayout {
    explicit HeaderLayout(const Box &box) : isLong(!box.content.empty() && box.content[0] == 1) {}
    [[nodiscard]] std::size_t timeSize() const { return isLong ? 8 : 4; }
    bool isLong;
};

/// Writes a header box anew in the version with 64-bit times. `beforeDuration` sits between the two dates and
/// the duration: a time scale, or a track's identifier.
void writeHeader(BoxWriter &writer, const Box &box, std::size_t beforeDurationSize,
                 const std::function<void(std::span<const std::uint8_t>)> &beforeDuration,
                 std::uint64_t duration)
{
    const HeaderLayout layout(box);
    BoxReader reader(box.content);
    writer.box(box.name, [&] {
        const std::uint32_t flags = reader.u32() & 0xffffff;
        writer.u32(1U << 24 | flags);
        writer.number(reader.number(static_cast<int>(layout.timeSize())), 8);
        writer.number(reader.number(static_cast<int>(layout.timeSize())), 8);
        const std::size_t start = 4 + 2 * layout.timeSize();
        const std::size_t end = start + beforeDurationSize + layout.timeSize();
        beforeDuration(box.content.subspan(std::min(start, box.content.size()), beforeDurationSize));
        writer.number(duration, 8);
        writer.copy(box.content.subspan(std::min(end, box.content.size())));
    });
}

std::uint32_t timeScaleOf(const Box &header)
{
    BoxReader reader(header.content);
    reader.skip(4 + 2 * HeaderLayout(header).timeSize());
    return reader.u32();
}

/// The box that the names lead to, each within the one before.
std::optional<Box> findPath(const Box &box, std::initializer_list<const char *> names)
{
    std::optional<Box> found = box;
    for (const char *name : names) {
        found = found ? findBox(found->content, boxName(name)) : std::nullopt;
    }
    return found;
}

/// 0 for a box that has none.
std::uint32_t identifierOf(const Box &track)
{
    const auto header = findPath(track, {"tkhd"});
    if (!header) {
        return 0;
    }
    BoxReader reader(header->content);
    reader.skip(4 + 2 * HeaderLayout(*header).timeSize());
    return reader.u32();
}

/// A track of the index with its samples.
class PlainTrack {
public:
    /// `header` is the track's box in the fragmented movie, whose time scale `fragmentedScale` is.
    PlainTrack(const Box &header, const std::vector<IndexedSample> &samples, std::uint32_t fragmentedScale)
        : m_box(header),
          m_table(samples)
    {
        const auto mediaHeader = findPath(header, {"mdia", "mdhd"});
        m_scale = std::max(1U, mediaHeader ? timeScaleOf(*mediaHeader) : 1U);
        m_start = startOf(fragmentedScale);
    }

    [[nodiscard]] bool isSound() const { return findPath(m_box, {"mdia", "minf", "smhd"}).has_value(); }
    /// Where its last sample ends, in ticks of the movie's timeline.
    [[nodiscard]] std::uint64_t duration() const { return m_start + toMovie(m_table.shownDuration()); }

    void write(BoxWriter &writer) const
    {
        writer.box(m_box.name, [&] {
            for (const Box &part : boxesIn(m_box.content)) {
                if (part.name == boxName("tkhd")) {
                    constexpr std::size_t kIdentifierAndReserved = 8;
                    writeHeader(
                        writer, part, kIdentifierAndReserved, [&](auto bytes) { writer.copy(bytes); },
                        duration());
                    writeEdits(writer);
                } else if (part.name == boxName("mdia")) {
                    writeMedia(writer, part);
                } else if (part.name != boxName("edts")) {
                    writer.copy(part.all);
                }
            }
        });
    }

private:
    [[nodiscard]] std::uint64_t toMovie(std::int64_t ticks) const
    {
        return static_cast<std::uint64_t>((ticks * kMovieScale + m_scale / 2) / m_scale);
    }

    /// When the track begins, in ticks of the movie's timeline: fragmented files tell it by an empty edit.
    [[nodiscard]] std::uint64_t startOf(std::uint32_t fragmentedScale) const
    {
        const auto edits = findPath(m_box, {"edts", "elst"});
        std::uint64_t start = 0;
        if (edits && fragmentedScale > 0) {
            BoxReader reader(edits->content);
            const int size = reader.u8() == 1 ? 8 : 4;
            reader.skip(3);
            const std::uint32_t count = reader.u32();
            const std::uint64_t length = reader.number(size);
            const std::uint64_t mediaTime = reader.number(size);
            const bool isEmptyEdit = count > 0 && mediaTime == (size == 8 ? ~std::uint64_t{0} : 0xffffffffU);
            start = isEmptyEdit ? length * kMovieScale / fragmentedScale : 0;
        }
        return start;
    }

    void writeEdits(BoxWriter &writer) const
    {
        const std::int64_t mediaStart = m_table.firstPresentation();
        if (m_start == 0 && mediaStart == 0) {
            return;
        }
        writer.box(boxName("edts"), [&] {
            writer.box(boxName("elst"), [&] {
                constexpr std::uint32_t kNormalRate = 0x10000;
                writer.u32(1U << 24);
                writer.u32(m_start > 0 ? 2 : 1);
                if (m_start > 0) {
                    writer.number(m_start, 8);
                    writer.number(~std::uint64_t{0}, 8);
                    writer.u32(kNormalRate);
                }
                writer.number(toMovie(m_table.shownDuration()), 8);
                writer.number(static_cast<std::uint64_t>(mediaStart), 8);
                writer.u32(kNormalRate);
            });
        });
    }

    void writeMedia(BoxWriter &writer, const Box &media) const
    {
        writer.box(media.name, [&] {
            for (const Box &part : boxesIn(media.content)) {
                if (part.name == boxName("mdhd")) {
                    constexpr std::size_t kTimeScale = 4;
                    writeHeader(
                        writer, part, kTimeScale, [&](auto bytes) { writer.copy(bytes); },
                        static_cast<std::uint64_t>(m_table.mediaDuration()));
                } else if (part.name == boxName("minf")) {
                    writeMediaInformation(writer, part);
                } else {
                    writer.copy(part.all);
                }
            }
        });
    }

    void writeMediaInformation(BoxWriter &writer, const Box &information) const
    {
        writer.box(information.name, [&] {
            for (const Box &part : boxesIn(information.content)) {
                if (part.name != boxName("stbl")) {
                    writer.copy(part.all);
                    continue;
                }
                writer.box(part.name, [&] {
                    if (const auto descriptions = findBox(part.content, boxName("stsd"))) {
                        writer.copy(descriptions->all);
                    }
                    m_table.write(writer);
                });
            }
        });
    }

    Box m_box;
    SampleTable m_table;
    std::uint32_t m_scale = 1;
    std::uint64_t m_start = 0; ///< in ticks of the movie's timeline
};

/// An index of a fragmented movie, and the tracks of the ordinary one.
class PlainMovieIndex {
public:
    explicit PlainMovieIndex(const FragmentedMovie &movie)
        : m_movie(movie),
          m_box(findBox(movie.index, boxName("moov")).value_or(Box())),
          m_header(findBox(m_box.content, boxName("mvhd")).value_or(Box()))
    {
        for (const Box &part : boxesIn(m_box.content)) {
            if (part.name == boxName("trak")) {
                addTrack(part, identifierOf(part));
            }
        }
    }

    /// Puts the mix in the place of all other sound; false when there is none of that length.
    bool replaceSoundByMix()
    {
        constexpr std::uint64_t kMaxMissing = kMovieScale / 20;
        std::uint64_t soundDuration = 0;
        for (const PlainTrack &track : m_tracks) {
            soundDuration = std::max(soundDuration, track.isSound() ? track.duration() : 0);
        }
        std::erase_if(m_tracks, [](const PlainTrack &track) { return track.isSound(); });
        const auto header = findBox(m_movie.mixHeader, boxName("trak"));
        return header && addTrack(*header, kMixTrack) &&
               m_tracks.back().duration() + kMaxMissing >= soundDuration;
    }

    [[nodiscard]] std::vector<std::uint8_t> bytes() const
    {
        BoxWriter writer;
        if (!m_tracks.empty()) {
            write(writer);
        }
        return writer.bytes();
    }

private:
    /// False when it has no sample.
    bool addTrack(const Box &header, std::uint32_t identifier)
    {
        const auto samples = m_movie.tracks.find(identifier);
        if (samples == m_movie.tracks.end() || samples->second.empty()) {
            return false;
        }
        m_tracks.emplace_back(header, samples->second, timeScaleOf(m_header));
        return true;
    }

    void write(BoxWriter &writer) const
    {
        const auto longest = std::ranges::max_element(m_tracks, {}, &PlainTrack::duration);
        writer.box(m_box.name, [&] {
            constexpr std::size_t kTimeScale = 4;
            writeHeader(
                writer, m_header, kTimeScale, [&](auto) { writer.u32(kMovieScale); }, longest->duration());
            for (const PlainTrack &track : m_tracks) {
                track.write(writer);
            }
            for (const Box &part : boxesIn(m_box.content)) {
                const bool isDone = part.name == boxName("mvhd") || part.name == boxName("trak");
                if (!isDone && part.name != boxName("mvex")) {
                    writer.copy(part.all);
                }
            }
        });
    }

    const FragmentedMovie &m_movie;
    const Box m_box;
    const Box m_header;
    std::vector<PlainTrack> m_tracks;
};

} // namespace

std::vector<std::uint8_t> plainIndex(const FragmentedMovie &movie)
{
    return PlainMovieIndex(movie).bytes();
}

std::vector<std::uint8_t> mixedIndex(const FragmentedMovie &movie)
{
    PlainMovieIndex index(movie);
    return index.replaceSoundByMix() ? index.bytes() : std::vector<std::uint8_t>();
}

} // namespace zivra::desktop
