#pragma once

#include "platform/FileSystem.h"

namespace zivra::desktop {

/// Local files of a freedesktop system.
///
/// A file system's birth time can't be set. The creation date of a file that was replaced is therefore kept
/// in the extended attribute `user.zivra.created` (ISO 8601 in UTC, milliseconds), which precedes the birth
/// time. A file system without extended attributes gives a replaced file the date of its replacement.
class DesktopFileSystem final : public FileSystem {
public:
    /// The folder that user-dirs.dirs names for videos, else (and where that is the home folder itself,
    /// its way to say "none") ~/Videos.
    [[nodiscard]] QUrl moviesDirectory() const override;
    [[nodiscard]] FileDates dates(const QUrl &file) const override;
    void moveItem(const QUrl &from, const QUrl &to) override;
    void trashItem(const QUrl &file) override;
    void replaceItem(const QUrl &item, const QUrl &newItem) override;
};

} // namespace zivra::desktop
