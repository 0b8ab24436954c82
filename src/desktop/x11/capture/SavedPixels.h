#pragma once

#include "desktop/x11/capture/SharedImage.h"

#include <QRegion>

#include <cstring>
#include <vector>

namespace zivra::desktop {

/// Keeps what is beneath something that is drawn into an image for one frame only, and puts it back.
class SavedPixels {
public:
    SavedPixels(SharedImage &image, const QRegion &region) : m_image(image), m_region(region & image.rect())
    {
        for (const QRect &rectangle : m_region) {
            for (int y = rectangle.top(); y <= rectangle.bottom(); ++y) {
                const std::uint8_t *row = m_image.pixel(rectangle.left(), y);
                m_bytes.insert(m_bytes.end(), row, row + bytes(rectangle));
            }
        }
    }
    ~SavedPixels()
    {
        const std::uint8_t *saved = m_bytes.data();
        for (const QRect &rectangle : m_region) {
            for (int y = rectangle.top(); y <= rectangle.bottom(); ++y) {
                std::memcpy(m_image.pixel(rectangle.left(), y), saved, bytes(rectangle));
                saved += bytes(rectangle);
            }
        }
    }
    SavedPixels(const SavedPixels &) = delete;
    SavedPixels &operator=(const SavedPixels &) = delete;

private:
    static std::size_t bytes(const QRect &rectangle)
    {
        return static_cast<std::size_t>(rectangle.width()) * SharedImage::kBytesPerPixel;
    }

    SharedImage &m_image;
    QRegion m_region;
    std::vector<std::uint8_t> m_bytes;
};

} // namespace zivra::desktop
