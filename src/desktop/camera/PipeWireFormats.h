#pragma once

#include "desktop/camera/CameraMode.h"

#include <spa/pod/pod.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace zivra::desktop {

/// What we accept of a camera on PipeWire, the most welcome first: pictures of the wished size, then of any;
/// each without decoding, then as JPEG.
class PipeWireOffer {
public:
    explicit PipeWireOffer(QSize wished);
    PipeWireOffer(const PipeWireOffer &) = delete;
    PipeWireOffer &operator=(const PipeWireOffer &) = delete;

    /// They live as long as the object.
    [[nodiscard]] std::vector<const spa_pod *> &formats() { return m_formats; }

private:
    alignas(8) std::array<std::uint8_t, 4096> m_memory{};
    std::vector<const spa_pod *> m_formats;
};

/// What was agreed on. Absent when it is none of what we offer.
[[nodiscard]] std::optional<CameraMode> agreedMode(const spa_pod *format);

/// What else a stream asks for: memory that we can read, and the time of each picture.
class PipeWireDemands {
public:
    PipeWireDemands();
    PipeWireDemands(const PipeWireDemands &) = delete;
    PipeWireDemands &operator=(const PipeWireDemands &) = delete;

    /// They live as long as the object.
    [[nodiscard]] std::vector<const spa_pod *> &parameters() { return m_parameters; }

private:
    alignas(8) std::array<std::uint8_t, 1024> m_memory{};
    std::vector<const spa_pod *> m_parameters;
};

} // namespace zivra::desktop
