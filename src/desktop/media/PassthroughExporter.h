#pragma once

#include "platform/MovieAsset.h"

namespace zivra::desktop {

/// Writes a stretch of a movie file to a new file, with all its tracks as they are. What is needed to
/// decode the start of the stretch lies in the file too, hidden by an edit list. Blocks until done; throws
/// `PlatformError`.
void exportStretch(const MovieAsset &asset, const MediaTimeRange &range, const QString &target,
                   MovieFileType type);

} // namespace zivra::desktop
