#include "desktop/camera/PictureConverter.h"

#include "desktop/camera/CameraThread.h"

#include <libyuv.h>

#include <algorithm>
#include <cstddef>
#include <utility>

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace zivra::desktop {

namespace {

constexpr int kBgrxBytes = 4; // a pixel

QSize evenSize(QSize size)
{
    return {size.width() / 2 * 2, size.height() / 2 * 2};
}

int leastStride(CameraPixels pixels, int width)
{
    switch (pixels) {
    case CameraPixels::Yuyv:
        return (width + 1) / 2 * 4;
    case CameraPixels::Bgrx:
        return width * kBgrxBytes;
    default:
        return (width + 1) / 2 * 2;
    }
}

/// Whether the rows are all there.
bool isWhole(const RawPicture &raw, int stride)
{
    const auto row = static_cast<std::size_t>(stride);
    const auto height = static_cast<std::size_t>(raw.size.height());
    if (raw.size.isEmpty() || stride < leastStride(raw.pixels, raw.size.width())) {
        return false;
    }
    if (raw.pixels != CameraPixels::Nv12) {
        return raw.bytes.size() >= row * height;
    }
    const auto chroma = row * ((height + 1) / 2);
    return raw.secondPlane.empty() ? raw.bytes.size() >= row * height + chroma
                                   : raw.bytes.size() >= row * height && raw.secondPlane.size() >= chroma;
}

void fill(FrameBuffer &picture, const RawPicture &raw, int stride)
{
    const int width = picture.size().width();
    const int height = picture.size().height();
    const auto into = [&](auto function, auto... source) {
        function(source..., picture.at(0), picture.stride(0), picture.at(1), picture.stride(1), picture.at(2),
                 picture.stride(2), width, height);
    };
    const std::uint8_t *const first = raw.bytes.data();
    if (raw.pixels == CameraPixels::Yuyv) {
        into(libyuv::YUY2ToI420, first, stride);
    } else if (raw.pixels == CameraPixels::Bgrx) {
        into(libyuv::ARGBToI420, first, stride); // libyuv names the bytes of a little-endian word
    } else {
        const auto *const second = raw.secondPlane.empty()
                                       ? first + std::ptrdiff_t{stride} * raw.size.height()
                                       : raw.secondPlane.data();
        into(libyuv::NV12ToI420, first, stride, second, stride);
    }
}

} // namespace

void PictureConverter::CodecDeleter::operator()(AVCodecContext *context) const
{
    avcodec_free_context(&context);
}

void PictureConverter::FrameDeleter::operator()(AVFrame *frame) const
{
    av_frame_free(&frame);
}

PictureConverter::PictureConverter() = default;
PictureConverter::~PictureConverter() = default;

std::shared_ptr<const VideoFrame> PictureConverter::convert(const RawPicture &raw)
{
    RawPicture plain = raw;
    if (raw.pixels == CameraPixels::Mjpeg) {
        if (!decode(raw.bytes) || !unpackDecoded()) {
            return nullptr;
        }
        plain = {.pixels = CameraPixels::Bgrx,
                 .size = {m_decoded->width, m_decoded->height},
                 .stride = 0,
                 .bytes = m_bgrx};
    }
    const int stride = plain.stride > 0 ? plain.stride : leastStride(plain.pixels, plain.size.width());
    if (!isWhole(plain, stride)) {
        return nullptr;
    }
    const QSize size = evenSize(plain.size);
    if (!m_pool || m_pool->frameSize() != size) {
        m_pool.emplace(size, kCameraPictures);
    }
    auto picture = m_pool->take();
    if (!picture) {
        return nullptr;
    }
    fill(*picture, plain, stride);
    return m_pool->wrap(std::move(picture));
}

bool PictureConverter::decode(std::span<const std::uint8_t> jpeg)
{
    if (!m_decoder) {
        const AVCodec *codec = avcodec_find_decoder(AV_CODEC_ID_MJPEG);
        m_decoder.reset(avcodec_alloc_context3(codec));
        m_decoded.reset(av_frame_alloc());
        if (codec == nullptr || !m_decoder || !m_decoded) {
            return false;
        }
        m_decoder->thread_count = 1; // more would hold pictures back
        m_decoder->err_recognition = AV_EF_EXPLODE;
        m_decoder->log_level_offset = AV_LOG_DEBUG; // a damaged picture is nothing to tell of
        if (avcodec_open2(m_decoder.get(), codec, nullptr) < 0) {
            return false;
        }
    }
    // The decoder reads beyond the end.
    m_packet.assign(jpeg.begin(), jpeg.end());
    m_packet.resize(jpeg.size() + AV_INPUT_BUFFER_PADDING_SIZE);
    AVPacket *packet = av_packet_alloc();
    packet->data = m_packet.data();
    packet->size = static_cast<int>(jpeg.size());
    const bool isSent = avcodec_send_packet(m_decoder.get(), packet) >= 0;
    av_packet_free(&packet);
    return isSent && avcodec_receive_frame(m_decoder.get(), m_decoded.get()) >= 0;
}

bool PictureConverter::unpackDecoded()
{
    const AVFrame &from = *m_decoded;
    const int stride = from.width * kBgrxBytes;
    m_bgrx.resize(static_cast<std::size_t>(stride) * static_cast<std::size_t>(from.height));
    const auto unpack = [&](auto function) {
        return function(from.data[0], from.linesize[0], from.data[1], from.linesize[1], from.data[2],
                        from.linesize[2], m_bgrx.data(), stride, from.width, from.height) == 0;
    };
    switch (from.format) {
    case AV_PIX_FMT_YUVJ420P:
        return unpack(libyuv::J420ToARGB);
    case AV_PIX_FMT_YUVJ422P:
        return unpack(libyuv::J422ToARGB);
    case AV_PIX_FMT_YUVJ444P:
        return unpack(libyuv::J444ToARGB);
    case AV_PIX_FMT_GRAY8:
        return libyuv::J400ToARGB(from.data[0], from.linesize[0], m_bgrx.data(), stride, from.width,
                                  from.height) == 0;
    default:
        return false;
    }
}

} // namespace zivra::desktop
