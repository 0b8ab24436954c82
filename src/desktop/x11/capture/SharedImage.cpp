#include "desktop/x11/capture/SharedImage.h"

#include "platform/PlatformError.h"

#include <sys/ipc.h>
#include <sys/shm.h>

namespace zivra::desktop {

void SharedImage::Detach::operator()(void *memory) const
{
    shmdt(memory);
}

SharedImage::SharedImage(const XcbConnection &connection, QSize size) : m_connection(connection), m_size(size)
{
    const auto bytes = static_cast<std::size_t>(stride()) * static_cast<std::size_t>(size.height());
    const int identifier = shmget(IPC_PRIVATE, bytes, IPC_CREAT | 0600);
    if (identifier < 0) {
        throw PlatformError(QStringLiteral("There is no shared memory left for the screen's picture."));
    }
    void *memory = shmat(identifier, nullptr, 0);
    // A failure to attach is (void *)-1 by definition (shmat(2)).
    const bool isAttached = reinterpret_cast<std::intptr_t>(memory) != -1;
    if (isAttached) {
        m_memory.reset(memory);
        m_segment = xcb_generate_id(connection.get());
        const auto error = connection.check(
            xcb_shm_attach_checked(connection.get(), m_segment, static_cast<std::uint32_t>(identifier), 0));
        if (error) {
            m_segment = 0;
        }
    }
    // Marked for removal at once, it goes with the last of its users, however that ends.
    shmctl(identifier, IPC_RMID, nullptr);
    if (m_segment == 0) {
        throw PlatformError(QStringLiteral("The X server cannot share memory with this program."));
    }
}

SharedImage::~SharedImage()
{
    xcb_shm_detach(m_connection.get(), m_segment);
    m_connection.flush();
}

bool SharedImage::read(xcb_drawable_t drawable, QPoint origin)
{
    return m_connection.reply(xcb_shm_get_image_reply,
                              xcb_shm_get_image(m_connection.get(), drawable,
                                                static_cast<std::int16_t>(origin.x()),
                                                static_cast<std::int16_t>(origin.y()),
                                                static_cast<std::uint16_t>(m_size.width()),
                                                static_cast<std::uint16_t>(m_size.height()), ~0U,
                                                XCB_IMAGE_FORMAT_Z_PIXMAP, m_segment, 0)) != nullptr;
}

} // namespace zivra::desktop
