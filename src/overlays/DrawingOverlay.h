#pragma once

#include "overlays/DrawingModel.h"
#include "overlays/DrawingOverlayController.h"
#include "overlays/OverlayPanel.h"

#include <optional>

namespace zivra {

/// The sheet as a panel. Made at the first show and kept.
class DrawingOverlay final : public DrawingOverlayController {
public:
    DrawingOverlay(const PanelMaker &maker, const MediaClock &clock);

    void show(const Screen &screen) override;
    void hide() override;
    void clearStrokes() override { m_model.clear(); }
    [[nodiscard]] std::optional<std::uint32_t> panelWindowID() const override;

    /// The same for good.
    [[nodiscard]] DrawingModel &model() { return m_model; }

private:
    PanelMaker m_maker;
    DrawingModel m_model;
    std::optional<OverlayPanel> m_panel;
};

} // namespace zivra
