#include "desktop/x11/capture/SharedImage.h"

#include "platform/PlatformError.h"

#include <sys/ipc.h>
#include <sys/shm.h>

#include <cstring>

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

bool SharedImage::readRows(xcb_drawable_t drawable, QPoint origin, QRect readable, int top, int count)
{
    const QRect rows(0, top, m_size.width(), count);
    const QRect read = rows & readable;
    if (read.isEmpty()) {
        std::memset(pixel(0, top), 0, static_cast<std::size_t>(stride()) * static_cast<std::size_t>(count));
        return true;
    }
    const QPoint corner = origin + read.topLeft();
    const auto offset = static_cast<std::uint32_t>(pixel(0, read.top()) - pixel(0, 0));
    const auto cookie = xcb_shm_get_image(
        m_connection.get(), drawable, static_cast<std::int16_t>(corner.x()),
        static_cast<std::int16_t>(corner.y()), static_cast<std::uint16_t>(read.width()),
        static_cast<std::uint16_t>(read.height()), ~0U, XCB_IMAGE_FORMAT_Z_PIXMAP, m_segment, offset);
    if (!m_connection.reply(xcb_shm_get_image_reply, cookie)) {
        return false;
    }
    if (read.width() != m_size.width()) {
        spread(read);
    }
    for (int y = top; y < top + count; ++y) {
        if (y < read.top() || y > read.bottom()) {
            std::memset(pixel(0, y), 0, static_cast<std::size_t>(stride()));
        }
    }
    return true;
}

/// The server writes rows without a gap: puts those of a rectangle narrower than the image where they
/// belong, from the last on, since each moves towards the end.
void SharedImage::spread(QRect read)
{
    const auto bytes = static_cast<std::size_t>(read.width()) * kBytesPerPixel;
    const std::uint8_t *packed = pixel(0, read.top());
    for (int row = read.height() - 1; row >= 0; --row) {
        const int y = read.top() + row;
        std::memmove(pixel(read.left(), y), packed + static_cast<std::size_t>(row) * bytes, bytes);
        std::memset(pixel(0, y), 0, static_cast<std::size_t>(read.left()) * kBytesPerPixel);
        const int right = read.right() + 1;
        std::memset(pixel(0, y) + static_cast<std::size_t>(right) * kBytesPerPixel, 0,
                    static_cast<std::size_t>(m_size.width() - right) * kBytesPerPixel);
    }
}

} // namespace zivra::desktop
