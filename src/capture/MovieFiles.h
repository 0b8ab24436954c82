#pragma once

#include "platform/MovieWriter.h"

#include <QLatin1String>
#include <QString>
#include <QUrl>

namespace zivra {

/// The container that goes with the file's extension: QuickTime for exactly "mov", else MPEG-4.
[[nodiscard]] MovieFileType movieFileType(const QUrl &url);

/// A new file name with the extension of `original`: `prefix` and a random part. A prefix with a dot
/// keeps the file out of the library's list.
[[nodiscard]] QString temporaryName(QLatin1String prefix, const QUrl &original);

} // namespace zivra
