#include "desktop/media/PassthroughExporter.h"

#include "desktop/media/EncodedTrackFormat.h"
#include "desktop/media/FileSink.h"
#include "desktop/media/MovieFile.h"
#include "desktop/media/OutputFile.h"
#include "desktop/media/TrackTrimmer.h"
#include "platform/PlatformError.h"

#include <algorithm>
#include <map>

extern "C" {
#include <libavutil/opt.h>
}

namespace zivra::desktop {

namespace {

const auto kExportFailure = QStringLiteral("The movie can’t be exported");
/// Ticks a second of the edit list's durations: less than a sample off for sound.
constexpr int kMovieTimescale = 90'000;
/// How far in front of the start to look, for the sound that its first decoded samples depend on.
constexpr MediaTime kSoundLeadIn = MediaTime::fromMilliseconds(100);

/// The part of `range` that the movie has.
MediaTimeRange clamped(const MediaTimeRange &range, MediaTime duration)
{
    if (range.start.isValid() && range.duration.isValid()) {
        const auto start = std::max(range.start, MediaTime::zero());
        const auto end = std::min(range.start + range.duration, duration);
        if (end > start) {
            return {start, end - start};
        }
    }
    throw PlatformError(QStringLiteral("The chosen range holds nothing of the movie."));
}

/// Reads the source and writes the target, track by track as the source interleaves them.
class Exporter {
public:
    Exporter(const MovieAsset &asset, const MediaTimeRange &range, const QString &target, MovieFileType type)
        : m_path(asset.url().toLocalFile()),
          m_range(clamped(range, asset.duration())),
          m_source(openMovieFile(m_path)),
          m_sink(target),
          m_target(makeOutput(m_sink, type))
    {
        for (const auto mediaType : {MediaType::Video, MediaType::Audio}) {
            for (const auto &track : asset.tracks(mediaType)) {
                addTrack(track);
            }
        }
        if (m_tracks.empty()) {
            throw PlatformError(QStringLiteral("The movie has no tracks."));
        }
    }

    void run()
    {
        checked(av_opt_set_int(m_target->priv_data, "movie_timescale", kMovieTimescale, 0), kExportFailure);
        m_target->avoid_negative_ts = AVFMT_AVOID_NEG_TS_DISABLED;
        checked(avformat_write_header(m_target.get(), nullptr), kExportFailure);
        seek();
        copy();
        checked(av_write_trailer(m_target.get()), kExportFailure);
        m_sink.commit();
        m_sink.close();
        checkSink();
    }

private:
    void addTrack(const MovieTrack &track)
    {
        const auto format = std::dynamic_pointer_cast<const EncodedTrackFormat>(track.formats.at(0));
        if (!format || static_cast<unsigned>(track.index) >= m_source->nb_streams) {
            throw PlatformError(QStringLiteral("The movie has changed."));
        }
        const auto &source = *m_source->streams[track.index];
        auto &target = addStream(*m_target, format->parameters(), source.time_base, track.preferredTransform);
        m_firstTrack = m_tracks.empty() ? track.index : m_firstTrack;
        m_tracks.emplace(
            track.index, TrackTrimmer(source, m_range, [this, &source, &target](PacketPtr packet) {
                packet->stream_index = target.index;
                packet->pos = -1;
                av_packet_rescale_ts(packet.get(), source.time_base, target.time_base);
                checked(av_interleaved_write_frame(m_target.get(), packet.get()), kExportFailure);
            }));
    }

    /// To a key frame that is shown no later than the start. The file's index goes by decoding times, which
    /// may be well before those: where the key frame it finds is too late, the one before is asked for.
    void seek()
    {
        const auto timeBase = m_source->streams[m_firstTrack]->time_base;
        const auto start = ticksFrom(m_range.start, timeBase);
        for (auto time = ticksFrom(m_range.start - kSoundLeadIn, timeBase); seekTo(time);) {
            const auto packet = nextOfFirstTrack();
            if (!packet || packet->pts <= start) {
                seekTo(time);
                return;
            }
            time = std::min(time, packet->dts) - 1;
        }
    }

    /// To the last key frame of the first track that is decoded no later than `time`; to the beginning, and
    /// false, where there is none.
    bool seekTo(std::int64_t time)
    {
        if (avformat_seek_file(m_source.get(), m_firstTrack, INT64_MIN, time, time, 0) >= 0) {
            return true;
        }
        avformat_seek_file(m_source.get(), m_firstTrack, INT64_MIN, time, INT64_MAX, 0);
        return false;
    }

    /// Null at the end.
    PacketPtr nextOfFirstTrack()
    {
        auto packet = makePacket();
        do {
            if (!readPacket(*m_source, m_path, *packet)) {
                return nullptr;
            }
        } while (packet->stream_index != m_firstTrack);
        return packet;
    }

    void copy()
    {
        const auto packet = makePacket();
        const auto isDone = [](const auto &track) { return track.second.isDone(); };
        while (!std::all_of(m_tracks.begin(), m_tracks.end(), isDone) &&
               readPacket(*m_source, m_path, *packet)) {
            const auto track = m_tracks.find(packet->stream_index);
            if (track != m_tracks.end() && !track->second.isDone()) {
                track->second.add(*packet);
                checkSink();
            }
        }
        for (auto &track : m_tracks) {
            track.second.finish();
        }
    }

    void checkSink() const
    {
        if (m_sink.failure() != 0) {
            throw PlatformError(writeFailureText(m_sink.failure()));
        }
    }

    const QString m_path;
    const MediaTimeRange m_range;
    const InputContextPtr m_source;
    FileSink m_sink;
    const OutputContextPtr m_target;
    std::map<int, TrackTrimmer> m_tracks; ///< by their index in the source
    int m_firstTrack = 0;
};

} // namespace

void exportStretch(const MovieAsset &asset, const MediaTimeRange &range, const QString &target,
                   MovieFileType type)
{
    Exporter(asset, range, target, type).run();
}

} // namespace zivra::desktop
