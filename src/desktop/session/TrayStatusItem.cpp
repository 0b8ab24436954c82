#include "desktop/session/TrayStatusItem.h"

#include "desktop/session/TrayBackdrop.h"
#include "desktop/session/TrayGlyph.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QMouseEvent>

#include <chrono>

namespace zivra::desktop {

using namespace std::chrono_literals;

TrayStatusItem::TrayStatusItem() : m_tint(presumedTrayTint())
{
    // Late enough for the tray to have drawn what is behind the icon.
    m_backdropTimer.setSingleShot(true);
    m_backdropTimer.setInterval(150ms);
    connect(&m_backdropTimer, &QTimer::timeout, this, &TrayStatusItem::matchBackdrop);
    connect(&m_trayIcon, &QSystemTrayIcon::activated, this, &TrayStatusItem::activated);
    QTimer::singleShot(0, this, [this] {
        updateIcon();
        m_trayIcon.show();
    });
}

TrayStatusItem::~TrayStatusItem()
{
    QCoreApplication::instance()->removeEventFilter(this);
}

void TrayStatusItem::setGlyph(StatusGlyph glyph)
{
    if (m_glyph != glyph) {
        m_glyph = glyph;
        updateIcon();
    }
}

void TrayStatusItem::setToolTip(const QString &toolTip)
{
    m_trayIcon.setToolTip(toolTip);
}

void TrayStatusItem::setClickHandler(std::function<void()> handler)
{
    m_clickHandler = std::move(handler);
}

void TrayStatusItem::setMenuProvider(std::function<std::vector<MenuItem>()> provider)
{
    m_menu.setProvider(std::move(provider));
    m_trayIcon.setContextMenu(&m_menu);
}

std::optional<QRectF> TrayStatusItem::frame() const
{
    const auto geometry = m_trayIcon.geometry();
    return geometry.isEmpty() ? std::nullopt : std::optional<QRectF>(geometry);
}

bool TrayStatusItem::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::MouseButtonRelease &&
        static_cast<QMouseEvent *>(event)->button() == Qt::LeftButton && m_isPressed) {
        m_isPressed = false;
        QCoreApplication::instance()->removeEventFilter(this);
        QMetaObject::invokeMethod(this, &TrayStatusItem::click, Qt::QueuedConnection);
    }
    return QObject::eventFilter(watched, event);
}

void TrayStatusItem::updateIcon()
{
    // Each painting may be over another panel or panel colour; only a change of tint paints again.
    m_trayIcon.setIcon(trayIcon(m_glyph, m_tint, [this] { m_backdropTimer.start(); }));
}

void TrayStatusItem::matchBackdrop()
{
    const auto tint = trayTintOver(m_trayIcon.geometry());
    if (tint && *tint != m_tint) {
        m_tint = *tint;
        updateIcon();
    }
}

void TrayStatusItem::activated(QSystemTrayIcon::ActivationReason reason)
{
    // The second of two quick clicks is told as a double click: it counts like any other.
    if (reason != QSystemTrayIcon::Trigger && reason != QSystemTrayIcon::DoubleClick) {
        return;
    }
    // An XEmbed icon triggers when the button goes down, a StatusNotifier host when the click is complete.
    if (QGuiApplication::mouseButtons().testFlag(Qt::LeftButton)) {
        m_isPressed = true;
        QCoreApplication::instance()->installEventFilter(this);
    } else {
        click();
    }
}

void TrayStatusItem::click()
{
    if (m_clickHandler) {
        m_clickHandler();
    }
}

} // namespace zivra::desktop
