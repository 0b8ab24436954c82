#include "desktop/x11/panels/PanelWindow.h"

#include <QBitmap>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QQuickItem>
#include <QRegion>
#include <QScreen>
#include <QTransform>

#include <utility>

namespace zivra::desktop {

PanelWindow::PanelWindow(bool takesKeyboard, bool ignoresMouse, bool isMovableByBackground)
    : m_isMovableByBackground(isMovableByBackground)
{
    Qt::WindowFlags flags = Qt::FramelessWindowHint | Qt::Tool | Qt::BypassWindowManagerHint |
                            Qt::WindowStaysOnTopHint | Qt::NoDropShadowWindowHint;
    flags.setFlag(Qt::WindowDoesNotAcceptFocus, !takesKeyboard);
    flags.setFlag(Qt::WindowTransparentForInput, ignoresMouse);
    setFlags(flags);
    setColor(Qt::transparent);
    connect(
        this, &QQuickWindow::frameSwapped, this,
        [this] {
            if (m_isCutOut) {
                cutOut();
            }
        },
        Qt::QueuedConnection);
}

void PanelWindow::setFrame(const QRect &frame)
{
    QScreen *const screen = QGuiApplication::screenAt(frame.center());
    if (screen != nullptr) {
        setScreen(screen);
    }
    setGeometry(frame);
}

void PanelWindow::mousePressEvent(QMouseEvent *event)
{
    QQuickWindow::mousePressEvent(event);
    const bool isTaken = mouseGrabberItem() != nullptr;
    if (!isTaken && m_isMovableByBackground && event->button() == Qt::LeftButton) {
        m_draggedAt = event->scenePosition();
        event->accept();
    }
}

void PanelWindow::mouseMoveEvent(QMouseEvent *event)
{
    if (m_draggedAt) {
        // The window manager does not move windows that it does not know.
        setPosition((event->globalPosition() - *m_draggedAt).toPoint());
        return;
    }
    QQuickWindow::mouseMoveEvent(event);
}

void PanelWindow::mouseReleaseEvent(QMouseEvent *event)
{
    m_draggedAt.reset();
    QQuickWindow::mouseReleaseEvent(event);
}

void PanelWindow::setCutOut(bool cutOut)
{
    if (std::exchange(m_isCutOut, cutOut) && !cutOut) {
        setMask({});
    }
}

void PanelWindow::cutOut()
{
    if (std::exchange(m_isCutting, true)) {
        return;
    }
    const QRegion region = drawnRegion();
    m_isCutting = false;
    if (region != mask()) {
        setMask(region.isEmpty() ? QRegion(0, 0, 1, 1) : region);
    }
}

QRegion PanelWindow::drawnRegion()
{
    // A view as large as the screen tells by a property of this name what of it there is to see.
    for (const QQuickItem *item : contentItem()->childItems()) {
        const QVariant told = item->property("visibleRegion");
        if (told.isValid()) {
            return told.value<QRegion>();
        }
    }
    const QImage mask = grabWindow().createAlphaMask(Qt::ThresholdDither | Qt::AvoidDither);
    const double scale = 1 / devicePixelRatio();
    return QTransform::fromScale(scale, scale).map(QRegion(QBitmap::fromImage(mask)));
}

} // namespace zivra::desktop
