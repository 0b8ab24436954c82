#include "desktop/x11/panels/MouseCatcher.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QMouseEvent>

#include <array>

namespace zivra::desktop {

namespace {

constexpr std::uint32_t kWantedEvents =
    XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE | XCB_EVENT_MASK_BUTTON_1_MOTION;

xcb_connection_t *connectionOfQt()
{
    return qGuiApp->nativeInterface<QNativeInterface::QX11Application>()->connection();
}

QEvent::Type typeOf(int type)
{
    return type == XCB_BUTTON_PRESS     ? QEvent::MouseButtonPress
           : type == XCB_BUTTON_RELEASE ? QEvent::MouseButtonRelease
                                        : QEvent::MouseMove;
}

} // namespace

MouseCatcher::MouseCatcher(QWindow &target)
    : m_target(target),
      m_server(connectionOfQt()),
      m_window(xcb_generate_id(m_server))
{
    const double scale = target.devicePixelRatio();
    const QPoint origin = target.geometry().topLeft();
    const QSize size = target.geometry().size() * scale;
    const std::array<std::uint32_t, 2> values{1, kWantedEvents};
    xcb_create_window(m_server, XCB_COPY_FROM_PARENT, m_window,
                      xcb_setup_roots_iterator(xcb_get_setup(m_server)).data->root,
                      static_cast<std::int16_t>(origin.x()), static_cast<std::int16_t>(origin.y()),
                      static_cast<std::uint16_t>(size.width()), static_cast<std::uint16_t>(size.height()), 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT,
                      XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values.data());
    xcb_map_window(m_server, m_window);
    xcb_flush(m_server);
    qGuiApp->installNativeEventFilter(this);
}

MouseCatcher::~MouseCatcher()
{
    qGuiApp->removeNativeEventFilter(this);
    xcb_destroy_window(m_server, m_window);
    xcb_flush(m_server);
}

bool MouseCatcher::nativeEventFilter(const QByteArray &eventType, void *message, qintptr * /*result*/)
{
    if (eventType != "xcb_generic_event_t") {
        return false;
    }
    constexpr int kSentByClient = 0x80;
    const auto &event = *static_cast<const xcb_generic_event_t *>(message);
    const int type = event.response_type & ~kSentByClient;
    if (type != XCB_BUTTON_PRESS && type != XCB_BUTTON_RELEASE && type != XCB_MOTION_NOTIFY) {
        return false;
    }
    // The three have the same layout.
    const auto &mouse = reinterpret_cast<const xcb_button_press_event_t &>(event);
    if (mouse.event != m_window) {
        return false;
    }
    if (type == XCB_MOTION_NOTIFY || mouse.detail == XCB_BUTTON_INDEX_1) {
        handOver(mouse, type);
    }
    return true;
}

void MouseCatcher::handOver(const xcb_button_press_event_t &event, int type)
{
    const QPointF local = QPointF(event.event_x, event.event_y) / m_target.devicePixelRatio();
    const bool isMove = type == XCB_MOTION_NOTIFY;
    QMouseEvent mouse(typeOf(type), local, local, m_target.geometry().topLeft() + local,
                      isMove ? Qt::NoButton : Qt::LeftButton,
                      type == XCB_BUTTON_RELEASE ? Qt::NoButton : Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&m_target, &mouse);
}

} // namespace zivra::desktop
