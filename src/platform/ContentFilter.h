#pragma once

#include <cstdint>
#include <optional>
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
    /// With `DisplayExcludingWindows`: what this process opens or shows while the capture runs is left out as
    /// well, except for the windows that are kept.
    std::optional<std::int64_t> excludedProcessID = std::nullopt;
    std::vector<std::uint32_t> keptWindowIDs = {};

    friend bool operator==(const ContentFilter &, const ContentFilter &) = default;
};

} // namespace zivra
