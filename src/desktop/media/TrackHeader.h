#pragma once

#include "desktop/media/FFmpegHandles.h"
#include "platform/MovieWriter.h"

#include <cstdint>
#include <vector>

namespace zivra::desktop {

/// The box that describes a track in a movie's index (`trak`; ISO/IEC 14496-12, 8.3), without any sample.
/// Throws `PlatformError`.
[[nodiscard]] std::vector<std::uint8_t> makeTrackHeader(const AVCodecParameters &parameters,
                                                        AVRational timeBase, MovieFileType type,
                                                        std::uint32_t identifier);

} // namespace zivra::desktop
