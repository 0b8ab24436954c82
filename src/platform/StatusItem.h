#pragma once

#include <QRectF>
#include <QString>

#include <functional>
#include <optional>
#include <vector>

namespace zivra {

enum class StatusGlyph { Idle, Recording };

/// An entry of the status item's menu; one without a title is a separator.
struct MenuItem {
    QString title;
    QString keyEquivalent; ///< a character to be pressed with the command (Control) key, or empty
    std::function<void()> action;
};

/// Our icon in the desktop's tray. Main thread only. A desktop without a tray shows nothing.
class StatusItem {
public:
    virtual ~StatusItem() = default;

    virtual void setGlyph(StatusGlyph glyph) = 0;
    virtual void setToolTip(const QString &toolTip) = 0;
    /// Called when the left button is released on the icon.
    virtual void setClickHandler(std::function<void()> handler) = 0;
    /// Asked for the entries each time the right button opens the menu.
    virtual void setMenuProvider(std::function<std::vector<MenuItem>()> provider) = 0;
    /// Where the icon is, in points from the top left of the main display, if the tray tells.
    [[nodiscard]] virtual std::optional<QRectF> frame() const = 0;
};

} // namespace zivra
