#pragma once

#include "desktop/media/FragmentedMovie.h"

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace zivra::desktop {

struct FileBox;
class FileView;

/// What stands in a movie file beside its tracks, for the index that is written at the end: until then no
/// player knows of it. It lies in boxes of a type of our own (`uuid`; ISO/IEC 14496-12, 4.2 and 11.1), each
/// with
///
///     16 bytes   the type of our own
///     32 bits    the kind of packets
///     32 bits    the identifier of the track that they belong to, or `kMixTrack`
///     32 bits    how many
///     and for each of them
///         32 bits   its size in bytes
///         32 bits   its duration in ticks of the track's time scale
///     followed by the packets themselves.
enum class SideKind : std::uint32_t {
    Header = 1,  ///< the track box that describes a track the index does not have
    Priming = 2, ///< what the decoder takes in before the first sample that is heard
    Samples = 3, ///< the samples of a track that the index does not have
};

/// Stands for the mix of all sound tracks; no track in a movie has this identifier.
constexpr std::uint32_t kMixTrack = 0;

/// Collects packets to be written in such boxes.
class SidePackets {
public:
    void add(SideKind kind, std::uint32_t track, std::span<const std::uint8_t> packet, std::int64_t duration);
    /// The boxes with everything that was added since the last call.
    [[nodiscard]] std::vector<std::uint8_t> takeBoxes();

private:
    struct Content {
        std::vector<std::pair<std::size_t, std::int64_t>> sizesAndDurations;
        std::vector<std::uint8_t> data;
    };

    std::map<std::pair<SideKind, std::uint32_t>, Content> m_contents;
};

/// One such box of a file. The packets have places, sizes and durations, but no times.
struct SideBox {
    SideKind kind;
    std::uint32_t track;
    std::vector<IndexedSample> packets;
};

/// Reads the list of its packets, not the packets; absent when it is a box of another type.
[[nodiscard]] std::optional<SideBox> readSideBox(FileView &file, const FileBox &box);

} // namespace zivra::desktop
