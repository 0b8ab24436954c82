#include "desktop/media/LibavPictureEncoder.h"

#include "platform/PlatformError.h"

#include <new>

extern "C" {
#include <libavutil/opt.h>
}

namespace zivra::desktop {

namespace {

const auto kEncodeFailure = QStringLiteral("The picture can’t be encoded");

void setOption(AVCodecContext &codec, const char *name, const char *value)
{
    checked(av_opt_set(codec.priv_data, name, value, 0), kEncodeFailure);
}

/// What our frames are: sRGB content, converted with the BT.601 matrix to limited range.
void setColours(AVCodecContext &codec)
{
    codec.color_range = AVCOL_RANGE_MPEG;
    codec.colorspace = AVCOL_SPC_SMPTE170M;
    codec.color_primaries = AVCOL_PRI_BT709;
    codec.color_trc = AVCOL_TRC_IEC61966_2_1;
    codec.chroma_sample_location = AVCHROMA_LOC_CENTER;
}

void setRateControl(AVCodecContext &codec, const VideoSettings &settings)
{
    codec.bit_rate = settings.averageBitRate;
    // Room for a scene change at full quality, within a second of twice the rate.
    codec.rc_max_rate = settings.averageBitRate * 2;
    codec.rc_buffer_size = static_cast<int>(std::min<std::int64_t>(settings.averageBitRate * 2, INT32_MAX));
    codec.gop_size = settings.maxKeyFrameInterval;
    codec.max_b_frames = 0;
}

/// An AVFrame that shows the planes of `picture` and keeps them alive: nothing is copied.
FramePtr wrap(std::shared_ptr<const VideoFrame> picture)
{
    auto frame = makeFrame();
    frame->format = AV_PIX_FMT_YUV420P;
    frame->width = picture->width;
    frame->height = picture->height;
    for (std::size_t plane = 0; plane < picture->planes.size(); ++plane) {
        frame->data[plane] = const_cast<std::uint8_t *>(picture->planes[plane].data);
        frame->linesize[plane] = picture->planes[plane].stride;
    }
    using Keeper = std::shared_ptr<const VideoFrame>;
    auto keeper = std::make_unique<Keeper>(std::move(picture));
    const auto release = [](void *opaque, std::uint8_t *) {
        std::unique_ptr<Keeper>(static_cast<Keeper *>(opaque)).reset();
    };
    const auto lumaSize =
        static_cast<std::size_t>(frame->linesize[0]) * static_cast<std::size_t>(frame->height);
    frame->buf[0] =
        av_buffer_create(frame->data[0], lumaSize, release, keeper.get(), AV_BUFFER_FLAG_READONLY);
    if (frame->buf[0] == nullptr) {
        throw std::bad_alloc();
    }
    static_cast<void>(keeper.release()); // the buffer's now
    return frame;
}

} // namespace

LibavPictureEncoder::LibavPictureEncoder(const VideoSettings &settings) : PictureEncoder(settings) {}

void LibavPictureEncoder::open(bool, PacketSink sink)
{
    m_sink = std::move(sink);
    const bool hevc = settings().codec == VideoCodec::Hevc;
    const AVCodec *encoder = avcodec_find_encoder_by_name(hevc ? "libx265" : "libx264");
    if (encoder == nullptr) {
        throw PlatformError(QStringLiteral("This system has no %1 encoder.")
                                .arg(hevc ? QStringLiteral("HEVC") : QStringLiteral("H.264")));
    }
    m_codec.reset(avcodec_alloc_context3(encoder));
    if (!m_codec) {
        throw std::bad_alloc();
    }
    m_codec->width = settings().width;
    m_codec->height = settings().height;
    m_codec->pix_fmt = AV_PIX_FMT_YUV420P;
    m_codec->time_base = kTimeBase;
    m_codec->framerate = {settings().expectedSourceFrameRate, 1};
    m_codec->thread_count = 0;
    m_codec->flags |= AV_CODEC_FLAG_GLOBAL_HEADER; // movie files keep the set-up in their index
    setColours(*m_codec);
    setRateControl(*m_codec, settings());
    setOption(*m_codec, "preset", hevc ? "ultrafast" : "superfast");
    setOption(*m_codec, "tune", "zerolatency");
    if (hevc) {
        setOption(*m_codec, "x265-params", "log-level=none");
    }
    checked(avcodec_open2(m_codec.get(), encoder, nullptr), kEncodeFailure);

    auto parameters = makeCodecParameters();
    checked(avcodec_parameters_from_context(parameters.get(), m_codec.get()), kEncodeFailure);
    if (hevc) {
        parameters->codec_tag = MKTAG('h', 'v', 'c', '1'); // more players take it than hev1
    }
    setParameters(std::move(parameters));
}

void LibavPictureEncoder::encodePicture(const std::shared_ptr<const VideoFrame> &picture, std::int64_t ticks)
{
    const auto frame = wrap(picture);
    frame->pts = ticks;
    encodeFrame(*m_codec, frame.get(), m_sink);
}

void LibavPictureEncoder::finish()
{
    encodeFrame(*m_codec, nullptr, m_sink);
}

void encodeFrame(AVCodecContext &codec, const AVFrame *frame, const TrackEncoder::PacketSink &sink)
{
    const auto failure = codec.codec_type == AVMEDIA_TYPE_VIDEO
                             ? kEncodeFailure
                             : QStringLiteral("The sound can’t be encoded");
    checked(avcodec_send_frame(&codec, frame), failure);
    for (;;) {
        auto packet = makePacket();
        const int result = avcodec_receive_packet(&codec, packet.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF) {
            return;
        }
        checked(result, failure);
        sink(std::move(packet));
    }
}

} // namespace zivra::desktop
