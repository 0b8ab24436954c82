#include "overlays/PictureConversion.h"

#include <QRect>

#include <libyuv.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

namespace zivra {

namespace {

/// The largest part of the picture with these proportions, from its middle, on even pixels.
QRect middleOf(const VideoFrame &frame, QSize proportions)
{
    const QSize scaled = proportions.scaled(frame.width, frame.height, Qt::KeepAspectRatio);
    const QSize size(std::max(scaled.width() & ~1, 2), std::max(scaled.height() & ~1, 2));
    return {((frame.width - size.width()) / 2) & ~1, ((frame.height - size.height()) / 2) & ~1, size.width(),
            size.height()};
}

/// Three planes in one block of memory.
class ScaledPlanes {
public:
    explicit ScaledPlanes(QSize size)
        : m_halfWidth((size.width() + 1) / 2),
          m_width(size.width()),
          m_lumaSize(static_cast<std::size_t>(size.width()) * size.height()),
          m_chromaSize(static_cast<std::size_t>(m_halfWidth) * ((size.height() + 1) / 2)),
          m_bytes(m_lumaSize + 2 * m_chromaSize)
    {
    }

    [[nodiscard]] std::uint8_t *plane(int index)
    {
        return m_bytes.data() + (index == 0 ? 0 : m_lumaSize + (index - 1) * m_chromaSize);
    }
    [[nodiscard]] int stride(int index) const { return index == 0 ? m_width : m_halfWidth; }

private:
    int m_halfWidth;
    int m_width;
    std::size_t m_lumaSize;
    std::size_t m_chromaSize;
    std::vector<std::uint8_t> m_bytes;
};

void premultiply(QImage &picture, const QImage &mask, bool mirrored)
{
    for (int row = 0; row < picture.height(); ++row) {
        auto *pixels = reinterpret_cast<QRgb *>(picture.scanLine(row));
        if (mirrored) {
            std::reverse(pixels, pixels + picture.width());
        }
        const std::uint8_t *opacity = mask.constScanLine(row);
        for (int column = 0; column < picture.width(); ++column) {
            constexpr std::uint8_t kSolid = 255;
            if (opacity[column] != kSolid) {
                const QRgb colour = pixels[column];
                pixels[column] =
                    qPremultiply(qRgba(qRed(colour), qGreen(colour), qBlue(colour), opacity[column]));
            }
        }
    }
}

} // namespace

QImage convertPicture(const VideoFrame &frame, const QImage &mask, bool mirrored)
{
    const QRect middle = middleOf(frame, mask.size());
    const auto source = [&](int index) {
        const VideoFrame::Plane &plane = frame.planes.at(static_cast<std::size_t>(index));
        const int divisor = index == 0 ? 1 : 2;
        return plane.data + static_cast<std::ptrdiff_t>(middle.top() / divisor) * plane.stride +
               middle.left() / divisor;
    };
    ScaledPlanes scaled(mask.size());
    libyuv::I420Scale(source(0), frame.planes[0].stride, source(1), frame.planes[1].stride, source(2),
                      frame.planes[2].stride, middle.width(), middle.height(), scaled.plane(0),
                      scaled.stride(0), scaled.plane(1), scaled.stride(1), scaled.plane(2), scaled.stride(2),
                      mask.width(), mask.height(), libyuv::kFilterBox);
    QImage picture(mask.size(), QImage::Format_ARGB32_Premultiplied);
    libyuv::I420ToARGB(scaled.plane(0), scaled.stride(0), scaled.plane(1), scaled.stride(1), scaled.plane(2),
                       scaled.stride(2), picture.bits(), static_cast<int>(picture.bytesPerLine()),
                       picture.width(), picture.height());
    premultiply(picture, mask, mirrored);
    return picture;
}

} // namespace zivra
