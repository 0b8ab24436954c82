#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace zivra::desktop {

/// A sample as an index lists it. Times are in ticks of its track's time scale, on the movie's timeline but
/// for the track's edit list.
struct IndexedSample {
    std::int64_t offset; ///< of its first byte in the file
    std::uint32_t size;  ///< bytes
    std::int64_t decodingTime;
    std::int64_t presentationTime;
    std::uint32_t duration;
    bool isKeyFrame;
};

/// What is in a fragmented movie file (ISO/IEC 14496-12, movie fragments) up to its last whole fragment.
struct FragmentedMovie {
    std::int64_t indexOffset;                                   ///< where the index box stands in the file
    std::vector<std::uint8_t> index;                            ///< that box, which lists no sample
    std::map<std::uint32_t, std::vector<IndexedSample>> tracks; ///< by track identifier
};

/// Reads the index and the heads of all fragments, not the media. Absent when the file is of another kind,
/// and when it can't be read.
[[nodiscard]] std::optional<FragmentedMovie> readFragmentedMovie(int fileDescriptor);

} // namespace zivra::desktop
