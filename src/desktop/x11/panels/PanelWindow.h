#pragma once

#include <QQuickWindow>

#include <optional>

namespace zivra::desktop {

/// The window of a panel: no frame, see-through, beyond the window manager's reach. Main thread only.
class PanelWindow : public QQuickWindow {
public:
    PanelWindow(bool takesKeyboard, bool ignoresMouse, bool isMovableByBackground);

    /// Whole points; on another screen too.
    void setFrame(const QRect &frame);
    void setIgnoresMouse(bool ignores) { setFlag(Qt::WindowTransparentForInput, ignores); }
    /// From now on the window has the shape of what is drawn in it, or is a rectangle.
    void setCutOut(bool cutOut);
    [[nodiscard]] bool isCutOut() const { return m_isCutOut; }

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    void cutOut();
    [[nodiscard]] QRegion drawnRegion();

    bool m_isMovableByBackground;
    bool m_isCutOut = false;
    bool m_isCutting = false;
    std::optional<QPointF> m_draggedAt; ///< in the window
};

} // namespace zivra::desktop
