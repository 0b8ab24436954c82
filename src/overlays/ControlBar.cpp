#include "overlays/ControlBar.h"

#include "overlays/PanelLevels.h"
#include "overlays/Placement.h"

#include <algorithm>

namespace zivra {

namespace {

constexpr QPointF kDistance(12, 24); ///< points from the screen's lower left corner

} // namespace

void ControlBar::show(const Screen &screen, RecordingControls &controls)
{
    if (m_panel && m_panel->isVisible()) {
        return;
    }
    if (!m_panel) {
        makePanel(controls);
    }
    m_visibleFrame = screen.visibleFrame;
    m_panel->setFrame(fromLowerLeft(m_visibleFrame, kDistance, m_panel->fittingSize()));
    m_panel->orderFront();
}

void ControlBar::makePanel(RecordingControls &controls)
{
    m_model = std::make_unique<ControlBarModel>(controls, m_drawing);
    m_panel.emplace(m_maker,
                    PanelStyle{.title = QStringLiteral("Controls"),
                               .level = kStatusBarLevel,
                               .isMovableByBackground = true},
                    QStringLiteral("Overlays/ControlBarView.qml"),
                    QVariantMap{{QStringLiteral("model"), QVariant::fromValue(m_model.get())}});
    QQuickItem &view = m_panel->view();
    QObject::connect(&view, &QQuickItem::implicitHeightChanged, &view, [this] { fitHeight(); });
    QObject::connect(&view, &QQuickItem::implicitWidthChanged, &view, [this] { fitHeight(); });
}

/// Grows and shrinks at its top, so that its foot stays on the screen, unless the top would leave it.
void ControlBar::fitHeight()
{
    if (!m_panel || !m_panel->isVisible()) {
        return;
    }
    QRectF frame = resizedFromLowerLeft(m_panel->frame(), m_panel->fittingSize());
    const bool wasInside = m_panel->frame().top() >= m_visibleFrame.top();
    if (wasInside && frame.top() < m_visibleFrame.top()) {
        frame.moveTop(m_visibleFrame.top());
    }
    m_panel->setFrame(frame);
}

void ControlBar::orderOut()
{
    if (m_panel) {
        m_panel->orderOut();
    }
}

} // namespace zivra
