#pragma once

#include "overlays/AreaSelector.h"
#include "overlays/CameraBubbleController.h"
#include "overlays/ControlBarController.h"
#include "overlays/Countdown.h"
#include "overlays/DrawingOverlayController.h"

namespace zivra {

// What a take without surfaces of its own shows on the screen: nothing.

class NoCameraBubble final : public CameraBubbleController {
public:
    void show(CameraManager &, const Screen &, bool, BubbleSize, bool) override {}
    void hide() override {}
    void resize(BubbleSize) override {}
    std::optional<std::uint32_t> panelWindowID() const override { return std::nullopt; }
};

class NoDrawingOverlay final : public DrawingOverlayController {
public:
    void show(const Screen &) override {}
    void hide() override {}
    void clearStrokes() override {}
    std::optional<std::uint32_t> panelWindowID() const override { return std::nullopt; }
};

class NoControlBar final : public ControlBarController {
public:
    void show(const Screen &, RecordingControls &) override {}
    void orderOut() override {}
};

class NoCountdown final : public CountdownController {
public:
    QCoro::Task<bool> run(Screen, int) override { co_return true; }
};

/// Answers with the rectangle it was given instead of asking; without one the choice is called off.
class FixedAreaSelector final : public AreaSelector {
public:
    explicit FixedAreaSelector(std::optional<QRectF> area) : m_area(area) {}

    QCoro::Task<std::optional<QRectF>> select(Screen) override { co_return m_area; }

private:
    std::optional<QRectF> m_area;
};

} // namespace zivra
