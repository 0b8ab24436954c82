#pragma once

#include "desktop/x11/XcbConnection.h"

#include <QPoint>
#include <QRect>
#include <QSize>

#include <xcb/shm.h>

#include <cstdint>
#include <memory>

namespace zivra::desktop {

/// A picture in memory that we share with the X server: 32 bits a pixel, blue in the lowest byte, rows
/// without a gap, black at first. Made for one connection, which must outlive it.
class SharedImage {
public:
    /// Throws `PlatformError`.
    SharedImage(const XcbConnection &connection, QSize size);
    ~SharedImage();
    SharedImage(const SharedImage &) = delete;
    SharedImage &operator=(const SharedImage &) = delete;

    [[nodiscard]] QSize size() const { return m_size; }
    [[nodiscard]] QRect rect() const { return {QPoint(0, 0), m_size}; }
    [[nodiscard]] int stride() const { return m_size.width() * kBytesPerPixel; }
    [[nodiscard]] std::uint8_t *pixel(int x, int y)
    {
        return static_cast<std::uint8_t *>(m_memory.get()) + std::ptrdiff_t{y} * stride() +
               std::ptrdiff_t{x} * kBytesPerPixel;
    }

    /// Reads the rows from `top` on out of a drawable in which the image's top left is at `origin`. What of
    /// the rows lies outside of `readable` (in the image's coordinates) becomes black. False when the server
    /// refused: the drawable has become smaller, or is gone.
    [[nodiscard]] bool readRows(xcb_drawable_t drawable, QPoint origin, QRect readable, int top, int count);

    static constexpr int kBytesPerPixel = 4;

private:
    struct Detach {
        void operator()(void *memory) const;
    };

    void spread(QRect read);

    const XcbConnection &m_connection;
    QSize m_size;
    std::unique_ptr<void, Detach> m_memory;
    xcb_shm_seg_t m_segment = 0;
};

} // namespace zivra::desktop
