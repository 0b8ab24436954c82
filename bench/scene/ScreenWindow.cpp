#include "ScreenWindow.h"

#include "Scene.h"

#include <sys/ipc.h>
#include <sys/shm.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <stdexcept>

namespace zivra::bench {

namespace {

struct FreeReply {
    void operator()(void *reply) const
    {
        std::free(reply); // NOLINT(cppcoreguidelines-owning-memory): the library hands out malloc'ed memory
    }
};

} // namespace

ScreenWindow::ScreenWindow() : m_connection(xcb_connect(nullptr, nullptr))
{
    if (!isAlive()) {
        throw std::runtime_error("no X server");
    }
    m_screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection.get())).data;
    if (QSize(m_screen->width_in_pixels, m_screen->height_in_pixels) != kScreenSize ||
        m_screen->root_depth != 24) {
        throw std::runtime_error("the screen is not 1920x1080 in 24 bits");
    }
    shareMemory();
    openWindow();
}

ScreenWindow::~ScreenWindow()
{
    m_connection.reset();
    shmdt(m_memory);
}

void ScreenWindow::shareMemory()
{
    const std::size_t size =
        static_cast<std::size_t>(kScreenSize.width()) * 4 * static_cast<std::size_t>(kScreenSize.height());
    const int id = shmget(IPC_PRIVATE, size, IPC_CREAT | 0600);
    m_memory = id < 0 ? nullptr : shmat(id, nullptr, 0);
    if (id < 0 || reinterpret_cast<std::intptr_t>(m_memory) == -1) {
        throw std::runtime_error("no shared memory");
    }
    m_segment = xcb_generate_id(m_connection.get());
    const auto attached =
        xcb_shm_attach_checked(m_connection.get(), m_segment, static_cast<std::uint32_t>(id), 1);
    const std::unique_ptr<void, FreeReply> error(xcb_request_check(m_connection.get(), attached));
    shmctl(id, IPC_RMID, nullptr);
    if (error) {
        throw std::runtime_error("the X server shares no memory");
    }
    m_picture = QImage(static_cast<uchar *>(m_memory), kScreenSize.width(), kScreenSize.height(),
                       QImage::Format_RGB32);
}

void ScreenWindow::openWindow()
{
    xcb_connection_t *const c = m_connection.get();
    m_window = xcb_generate_id(c);
    const std::array<std::uint32_t, 2> values{1, XCB_EVENT_MASK_EXPOSURE};
    xcb_create_window(c, XCB_COPY_FROM_PARENT, m_window, m_screen->root, 0, 0, m_screen->width_in_pixels,
                      m_screen->height_in_pixels, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                      XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values.data());
    m_gc = xcb_generate_id(c);
    xcb_create_gc(c, m_gc, m_window, 0, nullptr);
    xcb_map_window(c, m_window);
    xcb_warp_pointer(c, XCB_NONE, m_screen->root, 0, 0, 0, 0,
                     static_cast<std::int16_t>(kScreenSize.width() - 1),
                     static_cast<std::int16_t>(kScreenSize.height() - 1));
    waitForServer();
}

void ScreenWindow::waitForServer()
{
    xcb_connection_t *const c = m_connection.get();
    const std::unique_ptr<void, FreeReply> reply(
        xcb_get_input_focus_reply(c, xcb_get_input_focus(c), nullptr));
}

bool ScreenWindow::wasExposed()
{
    bool isExposed = false;
    while (
        const std::unique_ptr<xcb_generic_event_t, FreeReply> event{xcb_poll_for_event(m_connection.get())}) {
        isExposed = isExposed || (event->response_type & 0x7f) == XCB_EXPOSE;
    }
    return isExposed;
}

void ScreenWindow::show(QRect part)
{
    if (wasExposed()) {
        part = m_picture.rect();
    }
    if (part.isEmpty()) {
        return;
    }
    xcb_shm_put_image(m_connection.get(), m_window, m_gc, m_screen->width_in_pixels,
                      m_screen->height_in_pixels, static_cast<std::uint16_t>(part.x()),
                      static_cast<std::uint16_t>(part.y()), static_cast<std::uint16_t>(part.width()),
                      static_cast<std::uint16_t>(part.height()), static_cast<std::int16_t>(part.x()),
                      static_cast<std::int16_t>(part.y()), m_screen->root_depth, XCB_IMAGE_FORMAT_Z_PIXMAP, 0,
                      m_segment, 0);
    waitForServer();
}

} // namespace zivra::bench
