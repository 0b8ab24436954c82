#pragma once

#include "desktop/media/FragmentedMovie.h"

#include <cstdint>
#include <vector>

namespace zivra::desktop {

/// Makes the index of an ordinary movie file out of a fragmented one's: everything that describes the tracks
/// stays, and their samples are listed where the fragments put them (ISO/IEC 14496-12, 8.1 to 8.7).
///
/// Empty when there is no sample.
[[nodiscard]] std::vector<std::uint8_t> plainIndex(const FragmentedMovie &movie);

/// The same with the mix as the only sound. Also empty when the movie has no mix as long as its sound.
[[nodiscard]] std::vector<std::uint8_t> mixedIndex(const FragmentedMovie &movie);

} // namespace zivra::desktop
