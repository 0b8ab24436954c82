#pragma once

namespace zivra {

// The order of our panels on the screen, from the lowest to the topmost. Strokes pass under the bubble, and
// the bar stays within reach above both.

inline constexpr int kFloatingLevel = 3; ///< drawing sheet, recorder panel
inline constexpr int kCameraBubbleLevel = 4;
inline constexpr int kStatusBarLevel = 25; ///< control bar, countdown
inline constexpr int kToolTipLevel = 26;
inline constexpr int kScreenSaverLevel = 1000; ///< area selector

} // namespace zivra
