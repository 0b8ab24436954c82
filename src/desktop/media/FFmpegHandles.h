#pragma once

#include "platform/MediaTime.h"

#include <QString>

#include <memory>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

namespace zivra::desktop {

struct CodecContextDeleter {
    void operator()(AVCodecContext *context) const { avcodec_free_context(&context); }
};
struct CodecParametersDeleter {
    void operator()(AVCodecParameters *parameters) const { avcodec_parameters_free(&parameters); }
};
struct FrameDeleter {
    void operator()(AVFrame *frame) const { av_frame_free(&frame); }
};
struct PacketDeleter {
    void operator()(AVPacket *packet) const { av_packet_free(&packet); }
};
struct InputContextDeleter {
    void operator()(AVFormatContext *context) const { avformat_close_input(&context); }
};
struct OutputContextDeleter {
    void operator()(AVFormatContext *context) const { avformat_free_context(context); }
};

using CodecContextPtr = std::unique_ptr<AVCodecContext, CodecContextDeleter>;
using CodecParametersPtr = std::unique_ptr<AVCodecParameters, CodecParametersDeleter>;
using FramePtr = std::unique_ptr<AVFrame, FrameDeleter>;
using PacketPtr = std::unique_ptr<AVPacket, PacketDeleter>;
using InputContextPtr = std::unique_ptr<AVFormatContext, InputContextDeleter>;
using OutputContextPtr = std::unique_ptr<AVFormatContext, OutputContextDeleter>;

/// Each throws `std::bad_alloc` when there is no memory.
FramePtr makeFrame();
PacketPtr makePacket();
CodecParametersPtr makeCodecParameters();
CodecParametersPtr copyOf(const AVCodecParameters &parameters);

/// What libav* says of an error code, in words.
QString avErrorText(int error);

/// Throws a `PlatformError` of `what` and the reason when `result` is an error code; else passes it on.
int checked(int result, const QString &what);

/// The time base of `MediaTime`.
inline constexpr AVRational kNanoseconds{1, 1'000'000'000};

/// To the nearest tick. `time` is valid.
std::int64_t ticksFrom(MediaTime time, AVRational timeBase);
/// To the nearest nanosecond, invalid for AV_NOPTS_VALUE. Going back with `ticksFrom` gives the same
/// ticks in every time base coarser than half a nanosecond.
MediaTime timeFrom(std::int64_t ticks, AVRational timeBase);

/// Lets libav* report to standard error what is truly an error and nothing else. The process has one
/// such level; setting it again changes nothing.
void quietLibraries();

} // namespace zivra::desktop
