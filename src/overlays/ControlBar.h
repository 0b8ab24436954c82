#pragma once

#include "overlays/ControlBarController.h"
#include "overlays/ControlBarModel.h"
#include "overlays/OverlayPanel.h"

#include <memory>
#include <optional>

namespace zivra {

/// The bar as a panel. Made at the first show and kept, with the recording and the drawing it was made for.
class ControlBar final : public ControlBarController {
public:
    ControlBar(const PanelMaker &maker, DrawingModel &drawing) : m_maker(maker), m_drawing(drawing) {}

    /// In the lower left corner of the screen. A bar that is there already stays where the user put it.
    void show(const Screen &screen, RecordingControls &controls) override;
    void orderOut() override;

private:
    void makePanel(RecordingControls &controls);
    void fitHeight();

    PanelMaker m_maker;
    DrawingModel &m_drawing;
    std::unique_ptr<ControlBarModel> m_model;
    std::optional<OverlayPanel> m_panel;
    QRectF m_visibleFrame; ///< of the screen
};

} // namespace zivra
