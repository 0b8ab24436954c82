#include "overlays/DrawingOverlay.h"

#include "overlays/DrawingCanvas.h"
#include "overlays/PanelLevels.h"

namespace zivra {

DrawingOverlay::DrawingOverlay(const PanelMaker &maker, const MediaClock &clock)
    : m_maker(maker),
      m_model(clock)
{
    m_model.onActiveChange = [this](bool isDrawing) {
        if (m_panel) {
            m_panel->setIgnoresMouse(!isDrawing);
        }
    };
}

void DrawingOverlay::show(const Screen &screen)
{
    if (!m_panel) {
        m_panel.emplace(
            m_maker,
            PanelStyle{.title = QStringLiteral("Drawing"), .level = kFloatingLevel, .ignoresMouse = true},
            std::make_unique<DrawingCanvas>(m_model));
    }
    m_panel->setFrame(screen.frame);
    m_panel->orderFront();
}

void DrawingOverlay::hide()
{
    m_model.setIsDrawing(false);
    m_model.clear();
    if (m_panel) {
        m_panel->orderOut();
    }
}

std::optional<std::uint32_t> DrawingOverlay::panelWindowID() const
{
    return m_panel ? std::optional(m_panel->windowID()) : std::nullopt;
}

} // namespace zivra
