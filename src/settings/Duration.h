#pragma once

#include <QString>

namespace zivra {

/// Whole seconds, rounded down, as m:ss, or h:mm:ss from one hour on; 0:00 for anything negative.
/// `seconds` is finite and fits a 64-bit integer.
[[nodiscard]] QString formatDuration(double seconds);

} // namespace zivra
