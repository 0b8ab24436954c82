#pragma once

#include <QString>

namespace zivra::desktop {

/// The computer's name as its owner knows it: the pretty one of machine-info(5), or its host name. May be
/// empty.
[[nodiscard]] QString computerName();

} // namespace zivra::desktop
