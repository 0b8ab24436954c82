#pragma once

#include "platform/PanelSurface.h"
#include "ui/ViewLoader.h"

#include <QQuickItem>
#include <QRectF>
#include <QString>
#include <QVariantMap>

#include <cstdint>
#include <memory>

namespace zivra {

/// What panels are made with. Both outlive every panel.
struct PanelMaker {
    PanelSurfaces &surfaces;
    ViewLoader &views;
};

/// A floating surface of ours with its view. Main thread only.
class OverlayPanel {
public:
    /// `view` is a file as for `ViewLoader::load`.
    OverlayPanel(const PanelMaker &maker, const PanelStyle &style, const QString &view,
                 const QVariantMap &properties);
    OverlayPanel(const PanelMaker &maker, const PanelStyle &style, std::unique_ptr<QQuickItem> view);

    /// In the coordinates of `Screen::frame`.
    void setFrame(const QRectF &frame) { m_surface->setFrame(frame); }
    [[nodiscard]] QRectF frame() const { return m_surface->frame(); }
    /// What the view needs for all it shows now.
    [[nodiscard]] QSizeF fittingSize() const { return {m_view->implicitWidth(), m_view->implicitHeight()}; }

    void orderFront() { m_surface->orderFront(); }
    void orderOut() { m_surface->orderOut(); }
    [[nodiscard]] bool isVisible() const { return m_surface->isVisible(); }
    void setIgnoresMouse(bool ignores) { m_surface->setIgnoresMouse(ignores); }
    [[nodiscard]] std::uint32_t windowID() const { return m_surface->windowID(); }
    [[nodiscard]] QQuickItem &view() { return *m_view; }

private:
    std::unique_ptr<QQuickItem> m_view;
    std::unique_ptr<PanelSurface> m_surface;
};

} // namespace zivra
