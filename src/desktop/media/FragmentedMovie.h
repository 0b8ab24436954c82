#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace zivra::desktop {

/// A sample as an index lists it. Times are in ticks of its track's time scale, on the movie's timeline but
/// for the track's edit list.
struct IndexedSample {
    std::int64_t offset = 0; ///< of its first byte in the file
    std::uint32_t size = 0;  ///< bytes
    std::int64_t decodingTime = 0;
    std::int64_t presentationTime = 0;
    std::uint32_t duration = 0;
    bool isKeyFrame = true;
    bool isPriming = false; ///< decoded before the track starts, and neither shown nor heard
};

/// What is in a fragmented movie file (ISO/IEC 14496-12, movie fragments) up to its last whole fragment.
struct FragmentedMovie {
    std::int64_t indexOffset = 0;    ///< where the index box stands in the file
    std::vector<std::uint8_t> index; ///< that box, which lists no sample
    /// By track identifier; what is beside the fragments (see SidePackets.h) is in its place.
    std::map<std::uint32_t, std::vector<IndexedSample>> tracks;
    std::vector<std::uint8_t> mixHeader; ///< the track box of the sound tracks' mix; empty: there is none
};

/// Reads the index and the heads of all fragments, and what is beside them, not the media. Absent when the
/// file is of another kind, and when it can't be read.
[[nodiscard]] std::optional<FragmentedMovie> readFragmentedMovie(int fileDescriptor);

} // namespace zivra::desktop
