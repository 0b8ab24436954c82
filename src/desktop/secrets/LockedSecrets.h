#pragma once

#include <QString>

namespace zivra::desktop {

/// Whether the Secret Service of the session has a secret of that name that it keeps locked. Waits for the
/// service, 2 s at most; false when there is none. Any thread but the main one.
[[nodiscard]] bool hasLockedSecret(const QString &service, const QString &account);

} // namespace zivra::desktop
