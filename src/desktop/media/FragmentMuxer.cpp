#include "desktop/media/FragmentMuxer.h"

#include "desktop/media/FileSink.h"
#include "desktop/media/OutputFile.h"
#include "desktop/media/TrackHeader.h"

#include <algorithm>

extern "C" {
#include <libavutil/opt.h>
}

namespace zivra::desktop {

namespace {

const auto kMuxFailure = QStringLiteral("The movie can’t be written");
/// How long the last picture lasts when nothing follows it.
constexpr MediaTime kLastPictureDuration = MediaTime::fromNanoseconds(1'000'000'000 / 30);
/// The same where one may follow: too short rather than too long, so that it cannot run into that one.
constexpr MediaTime kStillPictureDuration = MediaTime::fromMilliseconds(1);
/// A flush passes over a waiting packet that is younger: the next one, and so its true duration, is due.
constexpr std::chrono::milliseconds kDueTime{50};

/// As libavformat numbers its tracks.
std::uint32_t identifierOf(int track)
{
    return static_cast<std::uint32_t>(track) + 1;
}

} // namespace

FragmentMuxer::FragmentMuxer(FileSink &sink, MovieFileType type)
    : m_sink(sink),
      m_type(type),
      m_context(makeOutput(sink, type))
{
}

int FragmentMuxer::addTrack(const AVCodecParameters &parameters, AVRational timeBase,
                            const std::optional<TrackTransform> &transform)
{
    addStream(*m_context, parameters, timeBase, transform);
    m_tracks.push_back({.timeBase = timeBase,
                        .showsPictures = parameters.codec_type == AVMEDIA_TYPE_VIDEO,
                        .waiting = {},
                        .waitingSince = {}});
    return static_cast<int>(m_tracks.size()) - 1;
}

void FragmentMuxer::addMix(const AVCodecParameters &parameters, AVRational timeBase)
{
    // Its place in the movie is that of the first sound track.
    const auto sound = std::ranges::find(m_tracks, false, &Track::showsPictures);
    const auto header = makeTrackHeader(parameters, timeBase, m_type,
                                        identifierOf(static_cast<int>(sound - m_tracks.begin())));
    m_sidePackets.add(SideKind::Header, kMixTrack, header, 0);
}

void FragmentMuxer::start()
{
    // The index goes out with the first flush, when it is known where each track starts.
    checked(av_opt_set(m_context->priv_data, "movflags",
                       "empty_moov+delay_moov+default_base_moof+frag_custom+skip_trailer", 0),
            kMuxFailure);
    checked(avformat_write_header(m_context.get(), nullptr), kMuxFailure);
}

void FragmentMuxer::write(int number, PacketPtr packet)
{
    auto &track = m_tracks.at(static_cast<std::size_t>(number));
    if ((packet->flags & AV_PKT_FLAG_DISCARD) != 0) {
        writeBeside(identifierOf(number), *packet);
        return;
    }
    track.empty = false;
    m_unflushedSize += packet->size;
    packet->stream_index = number;
    if (track.waiting) {
        releaseWaiting(track, packet->dts - track.waiting->dts);
    }
    if (track.showsPictures) {
        track.waiting = std::move(packet);
        track.waitingSince = Clock::now();
    } else {
        mux(track, std::move(packet));
    }
}

void FragmentMuxer::writeMix(const AVPacket &packet)
{
    writeBeside(kMixTrack, packet);
}

void FragmentMuxer::writeBeside(std::uint32_t track, const AVPacket &packet)
{
    const auto kind = (packet.flags & AV_PKT_FLAG_DISCARD) != 0 ? SideKind::Priming : SideKind::Samples;
    m_sidePackets.add(kind, track, std::span(packet.data, static_cast<std::size_t>(packet.size)),
                      packet.duration);
    m_unflushedSize += packet.size;
}

void FragmentMuxer::releaseWaiting(Track &track, std::int64_t duration)
{
    auto packet = std::move(track.waiting);
    packet->duration = duration;
    mux(track, std::move(packet));
}

void FragmentMuxer::mux(Track &track, PacketPtr packet)
{
    track.latest = std::max(track.latest, packet->pts + packet->duration);
    // The muxer lets every fragment of a track start where the one before ended. Where the next packet
    // comes later than that (a still screen), an earlier decoding time keeps its presentation right.
    if (track.startsFragment && packet->dts > track.end) {
        packet->duration += packet->dts - track.end;
        packet->dts = track.end;
    }
    track.startsFragment = false;
    track.end = packet->dts + packet->duration;
    av_packet_rescale_ts(packet.get(), track.timeBase, m_context->streams[packet->stream_index]->time_base);
    const int result = av_write_frame(m_context.get(), packet.get());
    if (m_sink.failure() == 0) {
        checked(result, kMuxFailure);
    }
}

void FragmentMuxer::flush()
{
    for (auto &track : m_tracks) {
        if (track.waiting && (!m_hasFragment || Clock::now() - track.waitingSince > kDueTime)) {
            releaseWaiting(track, ticksFrom(kStillPictureDuration, track.timeBase));
        }
    }
    const bool anything = std::any_of(m_tracks.begin(), m_tracks.end(),
                                      [](const Track &track) { return !track.startsFragment; });
    if (anything) {
        flushFragment();
    }
    if (m_hasFragment) {
        flushSidePackets();
        m_sink.startSync();
    }
}

void FragmentMuxer::flushFragment()
{
    if (!m_hasFragment) {
        av_write_frame(m_context.get(), nullptr); // the index alone
    }
    av_write_frame(m_context.get(), nullptr);
    m_sink.commit();
    m_unflushedSize = 0;
    m_hasFragment = m_sink.committedSize() > 0;
    for (auto &track : m_tracks) {
        track.startsFragment = true;
    }
}

/// After the fragment, which must not be lost where these find no room any more.
void FragmentMuxer::flushSidePackets()
{
    const auto boxes = m_sidePackets.takeBoxes();
    if (!boxes.empty()) {
        avio_write(m_sink.io(), boxes.data(), static_cast<int>(boxes.size()));
        m_sink.commit();
    }
}

void FragmentMuxer::finish()
{
    for (auto &track : m_tracks) {
        if (track.waiting) {
            const auto own = track.waiting->duration;
            releaseWaiting(track, own > 0 ? own : ticksFrom(kLastPictureDuration, track.timeBase));
        }
    }
    flush();
    if (m_sink.failure() == 0) {
        checked(av_write_trailer(m_context.get()), kMuxFailure);
        m_sink.commit();
    }
}

bool FragmentMuxer::hasPackets(int track) const
{
    return !m_tracks.at(static_cast<std::size_t>(track)).empty;
}

std::optional<FragmentMuxer::Clock::time_point> FragmentMuxer::waitingSince() const
{
    std::optional<Clock::time_point> since;
    for (const auto &track : m_tracks) {
        if (track.waiting) {
            since = std::min(since.value_or(track.waitingSince), track.waitingSince);
        }
    }
    return since;
}

MediaTime FragmentMuxer::end() const
{
    MediaTime end = MediaTime::zero();
    for (const auto &track : m_tracks) {
        end = std::max(end, timeFrom(track.latest, track.timeBase));
        if (track.waiting) {
            end = std::max(end, timeFrom(track.waiting->pts, track.timeBase) + kLastPictureDuration);
        }
    }
    return end;
}

} // namespace zivra::desktop
