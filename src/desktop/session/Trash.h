#pragma once

#include <QString>

#include <system_error>

namespace zivra::desktop {

/// Moves a file into the trash of its file system, from where file managers restore it (freedesktop.org,
/// "Trash", version 1.0): the user's own trash, or that at the top of another file system. The content is
/// never copied. On failure the file stays. Any thread.
[[nodiscard]] std::error_code moveToTrash(const QString &file);

} // namespace zivra::desktop
