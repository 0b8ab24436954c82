#pragma once

#include <QString>

namespace zivra::desktop {

/// Turns a fragmented movie file in place into an ordinary one: puts a complete index behind what is there
/// and, once that is on the disk, makes everything before it media by one small write. Whenever that is
/// interrupted, the file plays. Takes as long as reading the heads of the fragments.
///
/// False when the file is no fragmented movie, holds nothing, is being written by a `FileSink`, or could not
/// be written; it then stays as it is. Blocks.
bool makePlainMovie(const QString &path);

} // namespace zivra::desktop
