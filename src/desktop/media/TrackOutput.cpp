#include "desktop/media/TrackOutput.h"

#include "desktop/media/MovieFile.h"

namespace zivra::desktop {

TrackOutput::TrackOutput(ReaderProgress &progress, QString path, int track)
    : ReaderOutput(progress),
      m_path(std::move(path)),
      m_track(track)
{
}

void TrackOutput::open()
{
    m_input = openMovieFile(m_path);
    m_packet = makePacket();
    readOnly(*m_input, m_track);
}

std::optional<MediaSample> TrackOutput::readNext()
{
    do {
        if (!readPacket(*m_input, m_path, *m_packet)) {
            return std::nullopt;
        }
    } while (m_packet->stream_index != m_track);

    const auto timeBase = m_input->streams[m_track]->time_base;
    auto packet = std::make_shared<EncodedPacket>();
    packet->data.assign(m_packet->data, m_packet->data + m_packet->size);
    packet->isKeyFrame = (m_packet->flags & AV_PKT_FLAG_KEY) != 0;
    const auto presentation = m_packet->pts != AV_NOPTS_VALUE ? m_packet->pts : m_packet->dts;
    SampleTiming timing{.presentation = timeFrom(presentation, timeBase),
                        .decode = {},
                        .duration = timeFrom(m_packet->duration, timeBase)};
    if (m_packet->dts != presentation) {
        timing.decode = timeFrom(m_packet->dts, timeBase);
    }
    return MediaSample(std::shared_ptr<const EncodedPacket>(std::move(packet)), timing);
}

} // namespace zivra::desktop
