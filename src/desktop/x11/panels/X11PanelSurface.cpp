#include "desktop/x11/panels/X11PanelSurface.h"

#include <QPainter>
#include <QPixmap>
#include <QQuickPaintedItem>
#include <QScreen>

#include <utility>

namespace zivra::desktop {

namespace {

/// What the screen showed, beneath the content of a panel.
class FrozenScreen final : public QQuickPaintedItem {
public:
    explicit FrozenScreen(QPixmap picture) : m_picture(std::move(picture)) { setZ(-1); }

    void paint(QPainter *painter) override
    {
        painter->drawPixmap(boundingRect(), m_picture, m_picture.rect());
    }

private:
    QPixmap m_picture;
};

bool blendsWindows(const XcbConnection &connection)
{
    const auto manager =
        connection.reply(xcb_get_selection_owner_reply,
                         xcb_get_selection_owner(connection.get(), connection.atom("_NET_WM_CM_S0")));
    return manager && manager->owner != XCB_WINDOW_NONE;
}

} // namespace

X11PanelSurface::X11PanelSurface(const PanelStyle &style, PanelStack &stack)
    : m_style(style),
      m_stack(stack),
      m_focus(stack.connection()),
      m_window(style.takesKeyboard, style.ignoresMouse, style.isMovableByBackground),
      m_windowID(static_cast<std::uint32_t>(m_window.winId()))
{
    m_window.setTitle(style.title);
}

X11PanelSurface::~X11PanelSurface()
{
    orderOut();
}

void X11PanelSurface::setContent(QQuickItem &content)
{
    content.setParentItem(m_window.contentItem());
    const auto fill = [this, item = &content] { item->setSize(m_window.contentItem()->size()); };
    fill();
    QObject::connect(m_window.contentItem(), &QQuickItem::widthChanged, &content, fill);
    QObject::connect(m_window.contentItem(), &QQuickItem::heightChanged, &content, fill);
}

void X11PanelSurface::setFrame(const QRectF &frame)
{
    m_window.setFrame(QRect(frame.topLeft().toPoint(), QSize(qCeil(frame.width()), qCeil(frame.height()))));
}

void X11PanelSurface::orderFront()
{
    prepareForOpaqueDesktop();
    if (m_style.takesKeyboard && !m_window.isVisible()) {
        m_focus.remember();
    }
    m_window.show();
    m_stack.add(m_windowID, m_style.level);
    if (m_style.takesKeyboard) {
        m_window.requestActivate();
        m_window.setKeyboardGrabEnabled(true);
    }
}

void X11PanelSurface::orderOut()
{
    if (!m_window.isVisible()) {
        return;
    }
    if (m_style.takesKeyboard) {
        m_window.setKeyboardGrabEnabled(false);
        m_focus.giveBack(m_windowID);
    }
    dropCatcher();
    m_stack.remove(m_windowID);
    m_window.hide();
    m_frozenScreen.reset();
}

void X11PanelSurface::setIgnoresMouse(bool ignores)
{
    m_window.setIgnoresMouse(ignores);
    dropCatcher();
    // A panel that starts without the mouse is a sheet that shows little of its rectangle.
    if (!ignores && m_style.ignoresMouse && m_window.isCutOut() && m_window.isVisible()) {
        m_catcher = std::make_unique<MouseCatcher>(m_window);
        m_stack.add(m_catcher->window(), m_style.level);
        m_stack.add(m_windowID, m_style.level);
    }
}

void X11PanelSurface::dropCatcher()
{
    if (m_catcher) {
        m_stack.remove(m_catcher->window());
        m_catcher.reset();
    }
}

void X11PanelSurface::prepareForOpaqueDesktop()
{
    const bool isOpaque = !blendsWindows(m_stack.connection());
    m_window.setCutOut(isOpaque && m_style.opaque == PanelStyle::Opaque::CutOut);
    if (!isOpaque || m_style.opaque != PanelStyle::Opaque::FrozenScreen || m_window.isVisible()) {
        return;
    }
    const QRect area = m_window.geometry().translated(-m_window.screen()->geometry().topLeft());
    m_frozenScreen = std::make_unique<FrozenScreen>(
        m_window.screen()->grabWindow(0, area.x(), area.y(), area.width(), area.height()));
    m_frozenScreen->setSize(m_window.geometry().size());
    m_frozenScreen->setParentItem(m_window.contentItem());
}

} // namespace zivra::desktop
