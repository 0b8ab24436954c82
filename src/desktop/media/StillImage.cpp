#include "desktop/media/StillImage.h"

#include "desktop/media/FFmpegHandles.h"
#include "desktop/media/MovieFile.h"
#include "platform/PlatformError.h"

#include <QBuffer>
#include <QImage>
#include <QTransform>

#include <cmath>
#include <new>

extern "C" {
#include <libswscale/swscale.h>
}

namespace zivra::desktop {

namespace {

const auto kNoPicture = QStringLiteral("The movie has no picture there.");

struct ScalerDeleter {
    void operator()(SwsContext *context) const { sws_freeContext(context); }
};
using ScalerPtr = std::unique_ptr<SwsContext, ScalerDeleter>;

CodecContextPtr openDecoder(const AVCodecParameters &parameters)
{
    const AVCodec *codec = avcodec_find_decoder(parameters.codec_id);
    CodecContextPtr decoder(avcodec_alloc_context3(codec));
    if (codec == nullptr || !decoder) {
        throw PlatformError(kNoPicture);
    }
    checked(avcodec_parameters_to_context(decoder.get(), &parameters), kNoPicture);
    decoder->thread_count = 1; // more take longer to start than the few pictures up to this one to decode
    decoder->skip_loop_filter = AVDISCARD_ALL;
    checked(avcodec_open2(decoder.get(), codec, nullptr), kNoPicture);
    return decoder;
}

/// The newest picture up to the time, or the first one.
class PictureSearch {
public:
    PictureSearch(AVCodecContext &decoder, std::int64_t time) : m_decoder(decoder), m_time(time) {}

    /// Sends a packet, or the end of them as null. True when the picture is found.
    bool feed(const AVPacket *packet)
    {
        // One that is damaged spoils what follows, not what was found.
        if (avcodec_send_packet(&m_decoder, packet) < 0) {
            return m_found != nullptr;
        }
        auto frame = makeFrame();
        while (avcodec_receive_frame(&m_decoder, frame.get()) >= 0) {
            if (m_found && frame->best_effort_timestamp > m_time) {
                return true;
            }
            m_found = std::exchange(frame, makeFrame());
        }
        return false;
    }
    [[nodiscard]] FramePtr take() { return std::move(m_found); }

private:
    AVCodecContext &m_decoder;
    std::int64_t m_time;
    FramePtr m_found;
};

FramePtr pictureAt(AVFormatContext &input, const QString &path, int track, MediaTime time)
{
    const AVStream &stream = *input.streams[track];
    const std::int64_t ticks = ticksFrom(time, stream.time_base);
    const CodecContextPtr decoder = openDecoder(*stream.codecpar);
    readOnly(input, track);
    av_seek_frame(&input, track, ticks, AVSEEK_FLAG_BACKWARD);
    PictureSearch search(*decoder, ticks);
    const PacketPtr packet = makePacket();
    bool isFound = false;
    while (!isFound && readPacket(input, path, *packet)) {
        isFound = search.feed(packet.get());
        av_packet_unref(packet.get());
    }
    if (!isFound) {
        search.feed(nullptr);
    }
    FramePtr picture = search.take();
    if (!picture) {
        throw PlatformError(kNoPicture);
    }
    return picture;
}

QImage imageOf(const AVFrame &picture, QSize maximum)
{
    const QSize whole(picture.width, picture.height);
    const bool isLarger = whole.width() > maximum.width() || whole.height() > maximum.height();
    const QSize size = isLarger ? whole.scaled(maximum, Qt::KeepAspectRatio).expandedTo({1, 1}) : whole;
    const ScalerPtr scaler(sws_getContext(whole.width(), whole.height(), AVPixelFormat(picture.format),
                                          size.width(), size.height(), AV_PIX_FMT_BGRA, SWS_AREA, nullptr,
                                          nullptr, nullptr));
    QImage image(size, QImage::Format_RGB32);
    if (!scaler || image.isNull()) {
        throw std::bad_alloc();
    }
    std::uint8_t *const lines = image.bits();
    const auto stride = static_cast<int>(image.bytesPerLine());
    sws_scale(scaler.get(), picture.data, picture.linesize, 0, whole.height(), &lines, &stride);
    return image;
}

QTransform turn(const MovieTrack &track)
{
    constexpr double kOne = 1 << 16;
    const auto matrix = track.preferredTransform;
    return matrix ? QTransform((*matrix)[0] / kOne, (*matrix)[1] / kOne, (*matrix)[3] / kOne,
                               (*matrix)[4] / kOne, 0, 0)
                  : QTransform();
}

} // namespace

QByteArray stillJPEG(const MovieAsset &asset, MediaTime time, QSize maximum, double quality)
{
    const std::vector<MovieTrack> tracks = asset.tracks(MediaType::Video);
    if (tracks.empty()) {
        throw PlatformError(kNoPicture);
    }
    const QString path = asset.url().toLocalFile();
    const InputContextPtr input = openMovieFile(path);
    const FramePtr picture = pictureAt(*input, path, tracks.front().index, time);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    const QImage image = imageOf(*picture, maximum).transformed(turn(tracks.front()));
    if (!image.save(&buffer, "JPEG", static_cast<int>(std::lround(quality * 100)))) {
        throw PlatformError(kNoPicture);
    }
    return bytes;
}

} // namespace zivra::desktop
