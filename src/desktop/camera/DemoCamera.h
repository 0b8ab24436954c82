#pragma once

#include "desktop/camera/CameraBackend.h"

namespace zivra::desktop {

/// A camera that draws its pictures itself, 30 a second in any size: colour bars, a ball that moves, and the
/// picture's number, both in figures and as a row of black and white cells along the top edge, which a
/// program can read. Number and place of the ball follow from the time alone, so a picture tells when it was
/// taken: number n at n thirtieths of a second on CLOCK_MONOTONIC, counted modulo 65536.
///
/// The cells, from the left: a white one, the number's 16 bits with the highest first, and a last one that
/// makes the number of white cells among the 17 even. The strip below is white for the first tenth of every
/// second.
class DemoCamera final : public CameraBackend {
public:
    [[nodiscard]] std::vector<CaptureDevice> cameras() const override;
    /// It never comes or goes.
    void setChangeHandler(std::function<void()> handler) override;
    [[nodiscard]] std::unique_ptr<CaptureSource> makeSource(const QString &deviceID, QSize size) override;
};

} // namespace zivra::desktop
