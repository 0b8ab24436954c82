#pragma once

#include "desktop/media/FFmpegHandles.h"

namespace zivra::desktop {

/// Opens a movie file (MP4 or QuickTime) for reading; throws `PlatformError` with the reason.
InputContextPtr openMovieFile(const QString &path);

/// Reads the next packet of the streams that are not discarded; false at the end of the file. Throws
/// `PlatformError` for damaged packets and, at the end, when the file stops in the middle of its data.
bool readPacket(AVFormatContext &context, const QString &path, AVPacket &packet);

/// Leaves all other streams unread.
void readOnly(AVFormatContext &context, int stream);

} // namespace zivra::desktop
