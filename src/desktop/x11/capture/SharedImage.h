#pragma once

#include "desktop/x11/XcbConnection.h"

#include <QRect>
#include <QSize>

#include <xcb/shm.h>

#include <cstdint>
#include <memory>

namespace zivra::desktop {

/// A picture in memory that we share with the X server: 32 bits a pixel, blue in the lowest byte, rows
/// without a gap. Made for one connection, which must outlive it.
class SharedImage {
public:
    /// Throws `PlatformError`.
    SharedImage(const XcbConnection &connection, QSize size);
    ~SharedImage();
    SharedImage(const SharedImage &) = delete;
    SharedImage &operator=(const SharedImage &) = delete;

    [[nodiscard]] QSize size() const { return m_size; }
    [[nodiscard]] int stride() const { return m_size.width() * 4; }
    [[nodiscard]] std::uint8_t *data() { return static_cast<std::uint8_t *>(m_memory.get()); }

    /// Reads as much of a drawable as the image holds, from `origin` in the drawable's pixels. False when the
    /// server refused: the rectangle leaves the drawable, or that is gone.
    bool read(xcb_drawable_t drawable, QPoint origin);

private:
    struct Detach {
        void operator()(void *memory) const;
    };

    const XcbConnection &m_connection;
    QSize m_size;
    std::unique_ptr<void, Detach> m_memory;
    xcb_shm_seg_t m_segment = 0;
};

} // namespace zivra::desktop
