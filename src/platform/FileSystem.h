#pragma once

#include <QDateTime>
#include <QUrl>

namespace zivra {

/// A date that could not be read is not valid (`QDateTime::isValid()`).
struct FileDates {
    QDateTime created;
    QDateTime modified;
};

/// What the desktop does with files beyond reading and writing them. May be used from any thread.
/// Failures are thrown as `PlatformError`.
class FileSystem {
public:
    virtual ~FileSystem() = default;

    /// The user's folder for movies; it need not exist.
    [[nodiscard]] virtual QUrl moviesDirectory() const = 0;
    [[nodiscard]] virtual FileDates dates(const QUrl &file) const = 0;
    /// Renames; fails when `to` exists, and never overwrites it.
    virtual void moveItem(const QUrl &from, const QUrl &to) = 0;
    /// Moves the file to the desktop's trash, from where it can be restored.
    virtual void trashItem(const QUrl &file) = 0;
    /// Puts the new file in the place of the old one in one step. The creation date of the old one
    /// stays; the new one's name disappears. On failure both are left as they are.
    virtual void replaceItem(const QUrl &item, const QUrl &newItem) = 0;
};

} // namespace zivra
