#pragma once

#include "desktop/session/StatusMenu.h"
#include "platform/StatusItem.h"

#include <QObject>
#include <QSystemTrayIcon>
#include <QTimer>

namespace zivra::desktop {

/// Our icon in the tray, by XEmbed or StatusNotifier as the desktop has it.
///
/// It is shown as soon as the event loop runs, as that waits for the session bus. A tray that comes later
/// gets the icon then. `frame()` is absent before that, and always with a StatusNotifier tray, which
/// doesn't tell where it puts icons.
class TrayStatusItem final : public QObject, public StatusItem {
public:
    TrayStatusItem();
    ~TrayStatusItem() override;
    Q_DISABLE_COPY_MOVE(TrayStatusItem)

    void setGlyph(StatusGlyph glyph) override;
    void setToolTip(const QString &toolTip) override;
    void setClickHandler(std::function<void()> handler) override;
    void setMenuProvider(std::function<std::vector<MenuItem>()> provider) override;
    [[nodiscard]] std::optional<QRectF> frame() const override;

    /// Watches for the release that completes a click.
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void updateIcon();
    void matchBackdrop();
    void activated(QSystemTrayIcon::ActivationReason reason);
    void click();

    std::function<void()> m_clickHandler;
    StatusGlyph m_glyph = StatusGlyph::Idle;
    QColor m_tint;
    bool m_isPressed = false;
    QTimer m_backdropTimer;
    StatusMenu m_menu;
    QSystemTrayIcon m_trayIcon;
};

} // namespace zivra::desktop
