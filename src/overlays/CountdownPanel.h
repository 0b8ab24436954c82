#pragma once

#include "overlays/Countdown.h"
#include "overlays/OverlayPanel.h"

namespace zivra {

/// The countdown in the middle of the screen, with its two buttons. A panel for each run.
class CountdownPanel final : public CountdownController {
public:
    explicit CountdownPanel(const PanelMaker &maker) : m_maker(maker) {}

    [[nodiscard]] QCoro::Task<bool> run(Screen screen, int seconds) override;

private:
    PanelMaker m_maker;
};

} // namespace zivra
