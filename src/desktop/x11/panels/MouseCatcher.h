#pragma once

#include "desktop/x11/XcbConnection.h"

#include <QAbstractNativeEventFilter>
#include <QRect>
#include <QWindow>

namespace zivra::desktop {

/// Takes the mouse where a window that is cut out of its rectangle has nothing to show, and hands it to that
/// window. It is invisible by nature: a window without a picture. Main thread only.
class MouseCatcher final : public QAbstractNativeEventFilter {
public:
    /// On the application's own connection to the server, which brings the events.
    explicit MouseCatcher(QWindow &target);
    ~MouseCatcher() override;
    MouseCatcher(const MouseCatcher &) = delete;
    MouseCatcher &operator=(const MouseCatcher &) = delete;

    [[nodiscard]] xcb_window_t window() const { return m_window; }

    bool nativeEventFilter(const QByteArray &eventType, void *message, qintptr *result) override;

private:
    void handOver(const xcb_button_press_event_t &event, int type);

    QWindow &m_target;
    xcb_connection_t *m_server; ///< Qt's
    xcb_window_t m_window;
};

} // namespace zivra::desktop
