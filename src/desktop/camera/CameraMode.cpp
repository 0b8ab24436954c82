#include "desktop/camera/CameraMode.h"

#include <algorithm>
#include <tuple>

namespace zivra::desktop {

std::optional<CameraMode> chooseMode(const std::vector<CameraMode> &modes, QSize wished)
{
    static constexpr double kFluent = 20;
    static constexpr double kMostOfUse = 30;
    static constexpr QSize kLargest(1920, 1080);
    const auto merit = [wished](const CameraMode &mode) {
        const bool isWished = mode.size == wished;
        const bool fits = mode.size.boundedTo(kLargest) == mode.size;
        const int area = mode.size.width() * mode.size.height();
        return std::tuple(isWished, fits, mode.rate >= kFluent,
                          isWished ? 0
                          : fits   ? area
                                   : -area,
                          std::min(mode.rate, kMostOfUse), mode.pixels != CameraPixels::Mjpeg);
    };
    const auto best = std::ranges::max_element(modes, {}, merit);
    return best != modes.end() ? std::optional(*best) : std::nullopt;
}

} // namespace zivra::desktop
