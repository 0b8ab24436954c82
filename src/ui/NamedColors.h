#pragma once

#include "settings/Brand.h"

#include <QColor>

namespace zivra {

// The colours that views and strokes share, in sRGB.

inline QColor brandColor()
{
    return QColor::fromRgbF(static_cast<float>(kBrandColor.red), static_cast<float>(kBrandColor.green),
                            static_cast<float>(kBrandColor.blue), static_cast<float>(kBrandColor.alpha));
}

inline constexpr QColor kRed{0xFF, 0x3B, 0x30};
inline constexpr QColor kOrange{0xFF, 0x95, 0x00};
inline constexpr QColor kYellow{0xFF, 0xCC, 0x00};
inline constexpr QColor kGreen{0x34, 0xC7, 0x59};
inline constexpr QColor kBlue{0x00, 0x7A, 0xFF};
inline constexpr QColor kPurple{0xAF, 0x52, 0xDE};
inline constexpr QColor kWhite{0xFF, 0xFF, 0xFF};
inline constexpr QColor kBlack{0x00, 0x00, 0x00};

} // namespace zivra
