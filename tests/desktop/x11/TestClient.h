#pragma once

#include "desktop/x11/XcbConnection.h"

#include <QRect>

#include <initializer_list>

namespace zivra::desktop {

/// An application of the test with windows of its own, which go away with it.
class TestClient {
public:
    struct Look {
        QRect pixels = QRect(200, 150, 300, 200);
        const char *title = "";
        const char *type = ""; ///< _NET_WM_WINDOW_TYPE_ and this
        bool overridesRedirect = false;
        bool isInputOnly = false;
    };

    explicit TestClient(const QByteArray &displayName = {}) : m_connection(displayName) {}

    [[nodiscard]] const XcbConnection &connection() const { return m_connection; }

    /// Not mapped yet.
    [[nodiscard]] xcb_window_t makeWindow(const Look &look) const;
    [[nodiscard]] xcb_window_t showWindow(const Look &look) const;
    void map(xcb_window_t window) const;
    void unmap(xcb_window_t window) const;
    void raise(xcb_window_t window) const;
    /// A request to the window manager.
    void tellManager(xcb_window_t window, const char *message,
                     std::initializer_list<std::uint32_t> data) const;
    void setText(xcb_window_t window, const char *property, const char *type, QByteArrayView text) const;
    /// Lock 0x02, NumLock 0x10 and the like.
    [[nodiscard]] bool grabKey(xcb_keycode_t key, std::uint16_t modifiers) const;
    void ungrabKey(xcb_keycode_t key) const;

private:
    XcbConnection m_connection;
};

} // namespace zivra::desktop
