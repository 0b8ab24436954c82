#pragma once

#include "desktop/camera/CameraMode.h"
#include "platform/MediaSample.h"

#include <QBuffer>
#include <QColor>
#include <QImage>

#include <array>
#include <cstdlib>

namespace zivra::desktop::test {

inline const QColor kGreen(30, 160, 60);
/// The same by BT.601 in limited range.
inline constexpr std::array<std::uint8_t, 3> kGreenYuv{110, 103, 78};

/// A green picture as a camera lays it out.
inline std::vector<std::uint8_t> greenPicture(CameraPixels pixels, QSize size)
{
    const auto count = static_cast<std::size_t>(size.width() * size.height());
    const auto [y, u, v] = kGreenYuv;
    std::vector<std::uint8_t> bytes;
    const auto repeat = [&bytes](std::size_t times, std::initializer_list<std::uint8_t> what) {
        for (std::size_t i = 0; i < times; ++i) {
            bytes.insert(bytes.end(), what);
        }
    };
    if (pixels == CameraPixels::Yuyv) {
        repeat(count / 2, {y, u, y, v});
    } else if (pixels == CameraPixels::Nv12) {
        repeat(count, {y});
        repeat(count / 4, {u, v});
    } else if (pixels == CameraPixels::Bgrx) {
        repeat(count,
               {std::uint8_t(kGreen.blue()), std::uint8_t(kGreen.green()), std::uint8_t(kGreen.red()), 0});
    } else {
        QImage image(size, QImage::Format_RGB32);
        image.fill(kGreen);
        QBuffer file;
        image.save(&file, "JPEG", 95);
        bytes.assign(file.data().begin(), file.data().end());
    }
    return bytes;
}

/// Whether it is all over of that green, and of that size.
inline bool isGreen(const VideoFrame &frame, QSize size)
{
    bool isRight = frame.width == size.width() && frame.height == size.height();
    for (std::size_t plane = 0; isRight && plane < 3; ++plane) {
        const int half = plane == 0 ? 1 : 2;
        for (int y = 0; y < size.height() / half; y += 7) {
            for (int x = 0; x < size.width() / half; x += 7) {
                const int value = frame.planes[plane].data[y * frame.planes[plane].stride + x];
                isRight = isRight && std::abs(value - kGreenYuv[plane]) <= 3;
            }
        }
    }
    return isRight;
}

} // namespace zivra::desktop::test
