#pragma once

#include <cstdint>
#include <vector>

namespace zivra {

/// What of a display a capture shows.
struct ContentFilter {
    enum class Kind {
        DisplayExcludingWindows, ///< everything on the display but these windows
        DisplayIncludingWindows, ///< these windows and nothing else
    };

    Kind kind = Kind::DisplayExcludingWindows;
    std::uint32_t displayID = 0;
    std::vector<std::uint32_t> windowIDs;

    friend bool operator==(const ContentFilter &, const ContentFilter &) = default;
};

} // namespace zivra
