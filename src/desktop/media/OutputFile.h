#pragma once

#include "desktop/media/FFmpegHandles.h"
#include "platform/MovieWriter.h"

namespace zivra::desktop {

class FileSink;

/// A muxer that is still to be told where to write to; throws `PlatformError`.
OutputContextPtr makeOutput(MovieFileType type);
/// A muxer that writes to `sink`, which must outlive it; throws `PlatformError`.
OutputContextPtr makeOutput(const FileSink &sink, MovieFileType type);

/// Adds a stream that is stored, where the container allows, in `timeBase`.
AVStream &addStream(AVFormatContext &output, const AVCodecParameters &parameters, AVRational timeBase,
                    const std::optional<TrackTransform> &transform);

} // namespace zivra::desktop
