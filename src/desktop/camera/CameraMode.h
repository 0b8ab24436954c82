#pragma once

#include <QSize>

#include <optional>
#include <vector>

namespace zivra::desktop {

/// How a camera lays out its pictures, by the names of V4L2: packed 4:2:2, two planes of 4:2:0, bytes in the
/// order B G R x, or each one a JPEG.
enum class CameraPixels { Yuyv, Nv12, Bgrx, Mjpeg };

/// Something that a camera offers.
struct CameraMode {
    CameraPixels pixels = CameraPixels::Yuyv;
    QSize size;
    double rate = 0; ///< pictures a second

    friend bool operator==(const CameraMode &, const CameraMode &) = default;
};

/// The one for pictures of that size; where there is none that size, the largest up to full HD that is
/// fluent. Pictures that need no decoding are preferred as long as they come as often. Absent without any
/// mode.
[[nodiscard]] std::optional<CameraMode> chooseMode(const std::vector<CameraMode> &modes, QSize wished);

} // namespace zivra::desktop
