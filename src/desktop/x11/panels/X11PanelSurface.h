#pragma once

#include "desktop/x11/panels/FocusKeeper.h"
#include "desktop/x11/panels/MouseCatcher.h"
#include "desktop/x11/panels/PanelStack.h"
#include "desktop/x11/panels/PanelWindow.h"
#include "platform/PanelSurface.h"

#include <QQuickItem>

#include <memory>

namespace zivra::desktop {

/// A panel as a window that overrides redirection.
class X11PanelSurface final : public PanelSurface {
public:
    /// The stack outlives the surface.
    X11PanelSurface(const PanelStyle &style, PanelStack &stack);
    ~X11PanelSurface() override;
    X11PanelSurface(const X11PanelSurface &) = delete;
    X11PanelSurface &operator=(const X11PanelSurface &) = delete;

    void setContent(QQuickItem &content) override;
    void setFrame(const QRectF &frame) override;
    [[nodiscard]] QRectF frame() const override { return m_window.geometry(); }
    void orderFront() override;
    void orderOut() override;
    [[nodiscard]] bool isVisible() const override { return m_window.isVisible(); }
    void setIgnoresMouse(bool ignores) override;
    [[nodiscard]] std::uint32_t windowID() const override { return m_windowID; }

private:
    void prepareForOpaqueDesktop();
    void dropCatcher();

    PanelStyle m_style;
    PanelStack &m_stack;
    FocusKeeper m_focus;
    PanelWindow m_window;
    std::unique_ptr<QQuickItem> m_frozenScreen; ///< null on a desktop that blends windows
    std::unique_ptr<MouseCatcher> m_catcher;    ///< only while a cut-out sheet takes the mouse
    std::uint32_t m_windowID;
};

} // namespace zivra::desktop
