#include "desktop/media/FFmpegHandles.h"

#include "platform/PlatformError.h"

#include <array>
#include <new>

namespace zivra::desktop {

namespace {

template <typename Ptr>
Ptr owned(typename Ptr::pointer handle)
{
    if (handle == nullptr) {
        throw std::bad_alloc();
    }
    return Ptr(handle);
}

} // namespace

FramePtr makeFrame()
{
    return owned<FramePtr>(av_frame_alloc());
}

PacketPtr makePacket()
{
    return owned<PacketPtr>(av_packet_alloc());
}

CodecParametersPtr makeCodecParameters()
{
    return owned<CodecParametersPtr>(avcodec_parameters_alloc());
}

CodecParametersPtr copyOf(const AVCodecParameters &parameters)
{
    auto copy = makeCodecParameters();
    if (avcodec_parameters_copy(copy.get(), &parameters) < 0) {
        throw std::bad_alloc();
    }
    return copy;
}

QString avErrorText(int error)
{
    std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
    av_strerror(error, text.data(), text.size());
    return QString::fromUtf8(text.data());
}

int checked(int result, const QString &what)
{
    if (result < 0) {
        throw PlatformError(QStringLiteral("%1: %2").arg(what, avErrorText(result)));
    }
    return result;
}

std::int64_t ticksFrom(MediaTime time, AVRational timeBase)
{
    return av_rescale_q_rnd(time.nanoseconds(), kNanoseconds, timeBase, AV_ROUND_NEAR_INF);
}

MediaTime timeFrom(std::int64_t ticks, AVRational timeBase)
{
    return ticks == AV_NOPTS_VALUE ? MediaTime::invalid()
                                   : MediaTime::fromNanoseconds(
                                         av_rescale_q_rnd(ticks, timeBase, kNanoseconds, AV_ROUND_NEAR_INF));
}

void quietLibraries()
{
    av_log_set_level(AV_LOG_ERROR);
}

} // namespace zivra::desktop
