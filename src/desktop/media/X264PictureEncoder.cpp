#include "desktop/media/X264PictureEncoder.h"

#include "platform/PlatformError.h"

#include <x264.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>
#include <span>
#include <thread>

namespace zivra::desktop {

namespace {

const auto kEncodeFailure = QStringLiteral("The picture can’t be encoded");
static_assert(ChangedBlocks::kUnchanged == X264_MBINFO_CONSTANT);

/// One does for a full HD screen at 30 pictures a second, at the least cost.
int threadCount(const VideoSettings &settings)
{
    constexpr double kPixelsPerThread = 2'100'000;
    const double pixels = double(settings.width) * settings.height;
    const int wanted = static_cast<int>(pixels / kPixelsPerThread) + 1;
    return std::clamp(wanted, 1, std::max(1, static_cast<int>(std::thread::hardware_concurrency())));
}

/// What our frames are: sRGB content, converted with the BT.601 matrix to limited range. The numbers are
/// those of ITU-T H.264, annex E.
void setColours(x264_param_t &parameters)
{
    parameters.vui.b_fullrange = 0;
    parameters.vui.i_colorprim = AVCOL_PRI_BT709;
    parameters.vui.i_transfer = AVCOL_TRC_IEC61966_2_1;
    parameters.vui.i_colmatrix = AVCOL_SPC_SMPTE170M;
    parameters.vui.i_chroma_loc = AVCHROMA_LOC_CENTER - 1;
}

/// The quantiser of each picture comes from us, and libx264 spares itself the analyses that it would choose
/// one by: a quarter of all its work.
void setQuantisers(x264_param_t &parameters)
{
    parameters.rc.i_rc_method = X264_RC_CQP;
    // Ours are clipped to those that it would use by itself, P, I and B: the widest range (the factors are
    // those of quantiser steps, 6 to the doubling).
    constexpr int kMiddle = 26;
    constexpr float kTwentyFourSteps = 16;
    parameters.rc.i_qp_constant = kMiddle;
    parameters.rc.f_ip_factor = kTwentyFourSteps;
    parameters.rc.f_pb_factor = kTwentyFourSteps;
    // The eye is less exacting on colour, and text and lines gain what it leaves.
    parameters.analyse.i_chroma_qp_offset = 3;
}

x264_param_t encoderParameters(const VideoSettings &settings, AVRational timeBase)
{
    x264_param_t parameters;
    x264_param_default_preset(&parameters, "superfast", "zerolatency");
    parameters.i_log_level = X264_LOG_NONE;
    parameters.i_width = settings.width;
    parameters.i_height = settings.height;
    parameters.i_csp = X264_CSP_I420;
    parameters.i_fps_num = static_cast<std::uint32_t>(settings.expectedSourceFrameRate);
    parameters.i_fps_den = 1;
    parameters.i_timebase_num = static_cast<std::uint32_t>(timeBase.num);
    parameters.i_timebase_den = static_cast<std::uint32_t>(timeBase.den);
    parameters.i_threads = threadCount(settings);
    parameters.b_sliced_threads = parameters.i_threads > 1 ? 1 : 0;
    parameters.b_repeat_headers = 0;                    // movie files keep them in their index
    parameters.i_keyint_max = X264_KEYINT_MAX_INFINITE; // key frames come from us
    setQuantisers(parameters);
    setColours(parameters);

    parameters.i_scenecut_threshold = 0;
    parameters.analyse.i_weighted_pred = 0; // hinders the use of what has not changed
    parameters.analyse.b_mb_info = 1;
    // Measured on text and photographs that move. Where most of a picture is taken over from the one before,
    // small remainders are worth their bits, and smaller partitions more than a search for fractions of a
    // pixel.
    parameters.analyse.b_dct_decimate = 0;
    parameters.analyse.i_luma_deadzone[0] = 12;
    parameters.analyse.i_luma_deadzone[1] = 8;
    parameters.analyse.i_subpel_refine = 1;
    parameters.analyse.inter = X264_ANALYSE_PSUB16x16;
    parameters.analyse.b_transform_8x8 = 0;
    parameters.i_deblocking_filter_alphac0 = 1;
    parameters.i_deblocking_filter_beta = 1;
    return parameters;
}

x264_image_t imageOf(const VideoFrame &picture)
{
    x264_image_t image{};
    image.i_csp = X264_CSP_I420;
    image.i_plane = static_cast<int>(picture.planes.size());
    for (std::size_t plane = 0; plane < picture.planes.size(); ++plane) {
        image.plane[plane] = const_cast<std::uint8_t *>(picture.planes[plane].data); // only read
        image.i_stride[plane] = picture.planes[plane].stride;
    }
    return image;
}

std::span<std::uint8_t> bytesOf(AVPacket &packet)
{
    return {packet.data, static_cast<std::size_t>(packet.size)};
}

} // namespace

void X264PictureEncoder::EncoderDeleter::operator()(x264_t *encoder) const
{
    x264_encoder_close(encoder);
}

X264PictureEncoder::X264PictureEncoder(const VideoSettings &settings)
    : PictureEncoder(settings),
      m_blocks(settings.width, settings.height),
      m_rate(settings.averageBitRate, settings.maxKeyFrameInterval)
{
}

void X264PictureEncoder::open(bool, PacketSink sink)
{
    m_sink = std::move(sink);
    auto parameters = encoderParameters(settings(), kTimeBase);
    m_encoder.reset(x264_encoder_open(&parameters));
    if (!m_encoder) {
        throw PlatformError(kEncodeFailure);
    }
    setParameters(makeParameters());
}

CodecParametersPtr X264PictureEncoder::makeParameters()
{
    x264_nal_t *units = nullptr;
    int count = 0;
    if (x264_encoder_headers(m_encoder.get(), &units, &count) < 0) {
        throw PlatformError(kEncodeFailure);
    }
    auto parameters = makeCodecParameters();
    parameters->codec_type = AVMEDIA_TYPE_VIDEO;
    parameters->codec_id = AV_CODEC_ID_H264;
    parameters->format = AV_PIX_FMT_YUV420P;
    parameters->width = settings().width;
    parameters->height = settings().height;
    parameters->bit_rate = settings().averageBitRate;
    parameters->color_range = AVCOL_RANGE_MPEG;
    parameters->color_space = AVCOL_SPC_SMPTE170M;
    parameters->color_primaries = AVCOL_PRI_BT709;
    parameters->color_trc = AVCOL_TRC_IEC61966_2_1;
    parameters->chroma_location = AVCHROMA_LOC_CENTER;

    std::vector<std::uint8_t> headers;
    for (int i = 0; i < count; ++i) {
        if (units[i].i_type == NAL_SPS || units[i].i_type == NAL_PPS) {
            headers.insert(headers.end(), units[i].p_payload, units[i].p_payload + units[i].i_payload);
        }
        if (units[i].i_type == NAL_SPS) {
            constexpr std::size_t kStartCode = 4;
            m_numbers.emplace(std::span(units[i].p_payload, static_cast<std::size_t>(units[i].i_payload))
                                  .subspan(kStartCode));
        }
    }
    parameters->extradata =
        static_cast<std::uint8_t *>(av_mallocz(headers.size() + AV_INPUT_BUFFER_PADDING_SIZE));
    if (parameters->extradata == nullptr) {
        throw std::bad_alloc();
    }
    std::memcpy(parameters->extradata, headers.data(), headers.size());
    parameters->extradata_size = static_cast<int>(headers.size());
    return parameters;
}

void X264PictureEncoder::encodePicture(const std::shared_ptr<const VideoFrame> &picture, std::int64_t ticks)
{
    const bool isKey = m_untilKey == 0;
    m_untilKey = (isKey ? settings().maxKeyFrameInterval : m_untilKey) - 1;
    m_blocks.note(*picture);
    const double share = m_blocks.share();
    const int quantiser = m_rate.quantiser(
        {.time = av_q2d(kTimeBase) * static_cast<double>(ticks), .isKey = isKey, .changedShare = share});
    // libx264 skips unchanged macroblocks that are not coarser already than they would be now. After one
    // picture without a change that is so for all of them, and the next one can serve as the model of the
    // others.
    const bool isUnchanged = !isKey && share == 0;
    const bool isSkipped = isUnchanged && quantiser >= m_coarsest;
    m_coarsest = isUnchanged ? std::min(m_coarsest, quantiser) : std::numeric_limits<int>::max();

    auto packet = isSkipped && m_skipped ? repeated() : encoded(*picture, ticks, isKey, quantiser);
    m_skipped.reset(isSkipped && m_numbers->canCopy() ? av_packet_clone(packet.get()) : nullptr);
    m_rate.noteSize(std::int64_t{packet->size} * 8);
    packet->pts = ticks;
    packet->dts = ticks;
    packet->flags = isKey ? AV_PKT_FLAG_KEY : 0;
    m_sink(std::move(packet));
}

PacketPtr X264PictureEncoder::encoded(const VideoFrame &picture, std::int64_t ticks, bool isKey,
                                      int quantiser)
{
    x264_picture_t input;
    x264_picture_init(&input);
    input.img = imageOf(picture);
    input.i_pts = ticks;
    input.i_type = isKey ? X264_TYPE_IDR : X264_TYPE_P;
    input.prop.mb_info = m_blocks.marks().data();
    input.i_qpplus1 = 1 + quantiser;
    x264_picture_t output;
    x264_nal_t *units = nullptr;
    int count = 0;
    const int size = x264_encoder_encode(m_encoder.get(), &units, &count, &input, &output);
    if (size <= 0) {
        throw PlatformError(kEncodeFailure);
    }
    auto packet = makePacket();
    if (av_new_packet(packet.get(), size) < 0) {
        throw std::bad_alloc();
    }
    std::memcpy(packet->data, units[0].p_payload, static_cast<std::size_t>(size)); // they follow each other
    m_numbers->correct(bytesOf(*packet), isKey);
    return packet;
}

PacketPtr X264PictureEncoder::repeated()
{
    auto packet = std::move(m_skipped);
    if (av_packet_make_writable(packet.get()) < 0) {
        throw std::bad_alloc();
    }
    m_numbers->advance(bytesOf(*packet));
    return packet;
}

void X264PictureEncoder::finish()
{
    // Nothing is held back in there.
}

} // namespace zivra::desktop
