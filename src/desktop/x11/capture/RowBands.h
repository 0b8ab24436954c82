#pragma once

#include <QRegion>

#include <algorithm>
#include <vector>

namespace zivra::desktop {

/// Whole rows of a picture, one after the other.
struct RowBand {
    int top;
    int count;
};

/// The rows that a region touches. Bands with little between them are joined, since each costs a round trip.
inline std::vector<RowBand> rowBands(const QRegion &region)
{
    constexpr int kWorthSkipping = 64; // rows
    std::vector<RowBand> bands;
    for (const QRect &each : region) { // sorted by their top
        const int end = each.bottom() + 1;
        if (!bands.empty() && each.top() < bands.back().top + bands.back().count + kWorthSkipping) {
            bands.back().count = std::max(bands.back().count, end - bands.back().top);
        } else {
            bands.push_back({each.top(), each.height()});
        }
    }
    return bands;
}

} // namespace zivra::desktop
