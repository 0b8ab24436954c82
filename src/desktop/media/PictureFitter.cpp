#include "desktop/media/PictureFitter.h"

#include <QSize>

#include <algorithm>
#include <array>
#include <cstddef>
#include <new>
#include <vector>

extern "C" {
#include <libswscale/swscale.h>
}

namespace zivra::desktop {

namespace {

constexpr int even(int number)
{
    return number / 2 * 2;
}

} // namespace

void PictureFitter::ScalerDeleter::operator()(SwsContext *context) const
{
    sws_freeContext(context);
}

std::shared_ptr<const VideoFrame> PictureFitter::fit(const std::shared_ptr<const VideoFrame> &picture)
{
    if (picture->width == m_width && picture->height == m_height) {
        return picture;
    }
    const QSize inner = QSize(picture->width, picture->height).scaled(m_width, m_height, Qt::KeepAspectRatio);
    const int width = std::max(2, even(inner.width()));
    const int height = std::max(2, even(inner.height()));
    m_scaler.reset(sws_getCachedContext(m_scaler.release(), picture->width, picture->height,
                                        AV_PIX_FMT_YUV420P, width, height, AV_PIX_FMT_YUV420P, SWS_BILINEAR,
                                        nullptr, nullptr, nullptr));
    if (!m_scaler) {
        throw std::bad_alloc();
    }
    VideoFrame fitted = blackPicture();
    std::array<const std::uint8_t *, 3> from{};
    std::array<int, 3> fromStrides{};
    std::array<std::uint8_t *, 3> to{};
    std::array<int, 3> toStrides{};
    for (std::size_t plane = 0; plane < 3; ++plane) {
        const int share = plane == 0 ? 1 : 2;
        const VideoFrame::Plane &target = fitted.planes.at(plane);
        const std::ptrdiff_t corner = std::ptrdiff_t{even((m_height - height) / 2) / share} * target.stride +
                                      even((m_width - width) / 2) / share;
        from.at(plane) = picture->planes.at(plane).data;
        fromStrides.at(plane) = picture->planes.at(plane).stride;
        to.at(plane) = const_cast<std::uint8_t *>(target.data) + corner; // made a moment ago
        toStrides.at(plane) = target.stride;
    }
    sws_scale(m_scaler.get(), from.data(), fromStrides.data(), 0, picture->height, to.data(),
              toStrides.data());
    return std::make_shared<const VideoFrame>(std::move(fitted));
}

VideoFrame PictureFitter::blackPicture() const
{
    constexpr std::uint8_t kBlack = 16;
    constexpr std::uint8_t kNoColour = 128;
    const auto luma = static_cast<std::size_t>(m_width) * static_cast<std::size_t>(m_height);
    const auto pixels = std::make_shared<std::vector<std::uint8_t>>(luma * 3 / 2, kNoColour);
    std::fill_n(pixels->begin(), luma, kBlack);
    VideoFrame picture;
    picture.width = m_width;
    picture.height = m_height;
    picture.planes = {{{pixels->data(), m_width},
                       {pixels->data() + luma, m_width / 2},
                       {pixels->data() + luma / 4 * 5, m_width / 2}}};
    picture.storage = pixels;
    return picture;
}

} // namespace zivra::desktop
