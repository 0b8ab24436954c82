#pragma once

#include <QString>

namespace zivra::desktop {

/// Turns a fragmented movie file in place into an ordinary one: puts a complete index behind what is there
/// and, once that is on the disk, makes everything before it media by one small write. Whenever that is
/// interrupted, the file plays. Takes as long as reading the heads of the fragments.
///
/// False when the file is no fragmented movie, holds nothing, is being written by a `FileSink`, or could not
/// be written; it then stays as it is. Blocks.
///
/// Where the movie holds a mix of its sound, an index with that in place of the other sound stands behind the
/// one that counts, in a box that players pass over (`free`).
bool makePlainMovie(const QString &path);

/// Makes that index the one that counts, by one small write. False when there is none, when the file is being
/// written, and when it could not be written; it then stays as it is. Blocks.
bool useReadyMix(const QString &path);

} // namespace zivra::desktop
