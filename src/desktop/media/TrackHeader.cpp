#include "desktop/media/TrackHeader.h"

#include "desktop/media/MovieBoxes.h"
#include "desktop/media/OutputFile.h"

#include <memory>
#include <new>

extern "C" {
#include <libavutil/opt.h>
}

namespace zivra::desktop {

namespace {

const auto kHeaderFailure = QStringLiteral("The track can’t be described");

/// What a muxer writes before the first packet.
std::vector<std::uint8_t> writtenHeader(AVFormatContext &output)
{
    if (avio_open_dyn_buf(&output.pb) < 0) {
        throw std::bad_alloc();
    }
    const int result = avformat_write_header(&output, nullptr);
    std::uint8_t *data = nullptr;
    const int size = avio_close_dyn_buf(std::exchange(output.pb, nullptr), &data);
    const std::unique_ptr<std::uint8_t, void (*)(void *)> owner(data, av_free);
    checked(result, kHeaderFailure);
    return {data, data + size};
}

} // namespace

std::vector<std::uint8_t> makeTrackHeader(const AVCodecParameters &parameters, AVRational timeBase,
                                          MovieFileType type, std::uint32_t identifier)
{
    const auto output = makeOutput(type);
    addStream(*output, parameters, timeBase, std::nullopt).id = static_cast<int>(identifier);
    checked(av_opt_set(output->priv_data, "movflags", "empty_moov+default_base_moof", 0), kHeaderFailure);
    checked(av_opt_set_int(output->priv_data, "use_stream_ids_as_track_ids", 1, 0), kHeaderFailure);
    const auto header = writtenHeader(*output);
    const auto index = findBox(header, boxName("moov"));
    const auto track = index ? findBox(index->content, boxName("trak")) : std::nullopt;
    checked(track ? 0 : AVERROR_BUG, kHeaderFailure);
    return {track->all.begin(), track->all.end()};
}

} // namespace zivra::desktop
