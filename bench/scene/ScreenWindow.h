#pragma once

#include <QImage>

#include <xcb/shm.h>
#include <xcb/xcb.h>

#include <memory>

namespace zivra::bench {

/// A window that covers the screen, above the window manager's. Its picture is in memory shared with the
/// server.
class ScreenWindow {
public:
    /// Puts the mouse pointer out of the way. Throws `std::runtime_error` without a server that fits.
    ScreenWindow();
    ~ScreenWindow();
    ScreenWindow(const ScreenWindow &) = delete;
    ScreenWindow &operator=(const ScreenWindow &) = delete;

    /// To be drawn into between two calls of `show()`.
    QImage &picture() { return m_picture; }
    /// Puts a part of the picture on the screen, or all of it where the server lost it, in one step. Returns
    /// when the server has done so.
    void show(QRect part);
    /// False when the server has gone.
    [[nodiscard]] bool isAlive() const { return xcb_connection_has_error(m_connection.get()) == 0; }

private:
    struct Disconnect {
        void operator()(xcb_connection_t *connection) const { xcb_disconnect(connection); }
    };

    void shareMemory();
    void openWindow();
    void waitForServer();
    bool wasExposed();

    std::unique_ptr<xcb_connection_t, Disconnect> m_connection;
    const xcb_screen_t *m_screen = nullptr;
    xcb_window_t m_window = 0;
    xcb_gcontext_t m_gc = 0;
    xcb_shm_seg_t m_segment = 0;
    void *m_memory = nullptr;
    QImage m_picture;
};

} // namespace zivra::bench
