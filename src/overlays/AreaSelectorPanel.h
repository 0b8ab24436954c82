#pragma once

#include "overlays/AreaSelector.h"
#include "overlays/OverlayPanel.h"

namespace zivra {

/// Dims the screen and lets the user drag out a rectangle. The only panel of a take that has the keyboard,
/// for Escape and Return. A panel for each run.
class AreaSelectorPanel final : public AreaSelector {
public:
    explicit AreaSelectorPanel(const PanelMaker &maker) : m_maker(maker) {}

    [[nodiscard]] QCoro::Task<std::optional<QRectF>> select(Screen screen) override;

private:
    PanelMaker m_maker;
};

} // namespace zivra
