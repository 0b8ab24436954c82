#pragma once

#include <QRectF>
#include <QString>

#include <cstdint>
#include <memory>

class QQuickItem;

namespace zivra {

/// What a panel is for the whole of its life.
struct PanelStyle {
    /// What takes the place of see-through parts on a desktop that cannot blend its windows.
    enum class Opaque {
        CutOut,       ///< the panel has the shape of what is drawn in it
        FrozenScreen, ///< a still picture of the screen as it was when the panel was shown
    };

    QString title; ///< not seen, but told to those who use a screen reader
    int level = 0; ///< a panel is above all with a lower level, and above every window of others
    bool takesKeyboard = false;
    bool ignoresMouse = false; ///< at first
    bool isMovableByBackground = false;
    Opaque opaque = Opaque::CutOut;
};

/// A borderless see-through window on every workspace. A click on it acts at once and leaves the keyboard
/// with whoever has it, unless the panel is one that takes it. Main thread only.
///
/// Frames are in points, in the coordinates of `Screen::frame`, and are rounded to whole ones. Hiding keeps
/// the panel and its content.
class PanelSurface {
public:
    virtual ~PanelSurface() = default;

    /// Fills the panel with this item, which the caller owns and which outlives the surface.
    virtual void setContent(QQuickItem &content) = 0;

    virtual void setFrame(const QRectF &frame) = 0;
    [[nodiscard]] virtual QRectF frame() const = 0;

    /// Shows it above all panels of its level. One that takes the keyboard gets it.
    virtual void orderFront() = 0;
    /// The keyboard goes back to who had it.
    virtual void orderOut() = 0;
    [[nodiscard]] virtual bool isVisible() const = 0;

    /// While the mouse is ignored it reaches what is beneath.
    virtual void setIgnoresMouse(bool ignores) = 0;

    /// The number that the desktop knows it by; never changes.
    [[nodiscard]] virtual std::uint32_t windowID() const = 0;
};

class PanelSurfaces {
public:
    virtual ~PanelSurfaces() = default;

    /// Not visible at first.
    [[nodiscard]] virtual std::unique_ptr<PanelSurface> makePanel(const PanelStyle &style) = 0;
};

} // namespace zivra
