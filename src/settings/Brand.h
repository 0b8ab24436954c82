#pragma once

namespace zivra {

/// A colour in sRGB, each component from 0 to 1.
struct RgbaColor {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;

    friend constexpr bool operator==(const RgbaColor &, const RgbaColor &) = default;
};

/// The accent colour of the program.
inline constexpr RgbaColor kBrandColor{0.38, 0.36, 0.96, 1};

} // namespace zivra
