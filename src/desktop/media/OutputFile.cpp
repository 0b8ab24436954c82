#include "desktop/media/OutputFile.h"

#include "desktop/media/FileSink.h"

#include <cstring>
#include <new>

namespace zivra::desktop {

OutputContextPtr makeOutput(MovieFileType type)
{
    AVFormatContext *context = nullptr;
    const char *format = type == MovieFileType::QuickTime ? "mov" : "mp4";
    checked(avformat_alloc_output_context2(&context, nullptr, format, nullptr),
            QStringLiteral("The movie can’t be written"));
    OutputContextPtr output(context);
    output->flags |= AVFMT_FLAG_CUSTOM_IO;
    return output;
}

OutputContextPtr makeOutput(const FileSink &sink, MovieFileType type)
{
    auto output = makeOutput(type);
    output->pb = sink.io();
    return output;
}

AVStream &addStream(AVFormatContext &output, const AVCodecParameters &parameters, AVRational timeBase,
                    const std::optional<TrackTransform> &transform)
{
    AVStream *stream = avformat_new_stream(&output, nullptr);
    if (stream == nullptr || avcodec_parameters_copy(stream->codecpar, &parameters) < 0) {
        throw std::bad_alloc();
    }
    stream->time_base = timeBase;
    if (transform) {
        auto *data = av_stream_new_side_data(stream, AV_PKT_DATA_DISPLAYMATRIX, sizeof(TrackTransform));
        if (data == nullptr) {
            throw std::bad_alloc();
        }
        std::memcpy(data, transform->data(), sizeof(TrackTransform));
    }
    return *stream;
}

} // namespace zivra::desktop
