#include "overlays/OverlayPanel.h"

#include <utility>

namespace zivra {

OverlayPanel::OverlayPanel(const PanelMaker &maker, const PanelStyle &style, const QString &view,
                           const QVariantMap &properties)
    : OverlayPanel(maker, style, maker.views.load(view, properties))
{
}

OverlayPanel::OverlayPanel(const PanelMaker &maker, const PanelStyle &style, std::unique_ptr<QQuickItem> view)
    : m_view(std::move(view)),
      m_surface(maker.surfaces.makePanel(style))
{
    m_surface->setContent(*m_view);
}

} // namespace zivra
