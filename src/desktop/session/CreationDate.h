#pragma once

#include <QDateTime>

namespace zivra::desktop {

/// The creation date kept in the file's extended attribute, else its birth time; not valid without either.
[[nodiscard]] QDateTime creationDate(const QByteArray &path);

/// Keeps a creation date in the extended attribute of an open file. False where the file system has none.
bool storeCreationDate(int file, const QDateTime &date);

/// Takes the extended attribute away again.
void forgetCreationDate(int file);

} // namespace zivra::desktop
