#include "desktop/media/WriterWorker.h"

#include "desktop/media/PlainMovie.h"
#include "platform/PlatformError.h"

#include <QFile>

#include <algorithm>

namespace zivra::desktop {

namespace {

constexpr std::chrono::seconds kFlushInterval{1};
/// A picture that nothing follows is flushed after this time, so that a still screen, of which one comes a
/// second, is in the file as soon as a moving one; but no more often than this.
constexpr std::chrono::milliseconds kStillDelay{60};
constexpr std::chrono::milliseconds kLeastFlushInterval{500};
constexpr std::int64_t kMaxUnflushedSize = 8 << 20; // bytes
/// Sound that stays away for longer will hardly come any more. Silence takes its place bit by bit: all of it
/// at once, after an hour, would keep everything else waiting.
constexpr MediaTime kMaxSoundDelay = MediaTime::fromSeconds(10);
/// Enough silence for every encoder to give out a packet.
constexpr MediaTime kOpeningSilence = MediaTime::fromMilliseconds(100);

} // namespace

WriterWorker::WriterWorker(const QString &path, MovieFileType type, const Tracks &tracks,
                           SampleIntake &intake, Events events)
    : m_path(path),
      m_tracks(tracks),
      m_intake(intake),
      m_events(std::move(events)),
      m_sink(path),
      m_muxer(m_sink, type)
{
    try {
        openTracks();
    } catch (...) {
        QFile::remove(path); // made a moment ago, of no use to anyone
        throw;
    }
}

void WriterWorker::openTracks()
{
    for (std::size_t i = 0; i < m_tracks.size(); ++i) {
        auto &track = *m_tracks[i];
        track.open(m_intake.isRealTime(i), [this, number = static_cast<int>(i)](PacketPtr packet) {
            m_muxer.write(number, std::move(packet));
        });
        m_muxer.addTrack(track.parameters(), track.timeBase(), track.transform());
    }
    openMix();
    m_muxer.start();
}

/// Several sounds of a live take will have to become one, and then somebody waits for it: they are mixed as
/// they come.
void WriterWorker::openMix()
{
    std::vector<TrackEncoder *> sounds;
    for (std::size_t i = 0; i < m_tracks.size(); ++i) {
        if (m_tracks[i]->parameters().codec_type == AVMEDIA_TYPE_AUDIO) {
            sounds.push_back(m_tracks[i].get());
            if (!m_intake.isRealTime(i)) {
                return;
            }
        }
    }
    if (sounds.size() < 2) {
        return;
    }
    auto mix =
        std::make_unique<LiveMix>(sounds.size(), [this](PacketPtr packet) { m_muxer.writeMix(*packet); });
    for (std::size_t i = 0; i < sounds.size(); ++i) {
        const bool isHeard = sounds[i]->shareSound(
            [mix = mix.get(), i](std::span<const float> samples, const AudioFormat &format) {
                mix->add(i, samples, format);
            });
        if (!isHeard) {
            return;
        }
    }
    m_muxer.addMix(mix->parameters(), mix->timeBase());
    m_mix = std::move(mix);
}

bool WriterWorker::run()
{
    m_nextFlush = Clock::now() + kFlushInterval;
    for (;;) {
        const auto event = m_intake.take(std::min(m_nextFlush, stillFlush()));
        if (std::holds_alternative<SampleIntake::Stopped>(event)) {
            m_sink.discardFurtherData();
            return false;
        }
        if (std::holds_alternative<SampleIntake::Drained>(event)) {
            complete();
            return !m_failed;
        }
        guarded([&] {
            if (const auto *taken = std::get_if<SampleIntake::Sample>(&event)) {
                process(*taken);
            }
            flushIfDue();
        });
    }
}

/// Runs one step of the work, unless the file takes no more.
template <typename Work>
void WriterWorker::guarded(Work work)
{
    if (m_failed || m_interrupted) {
        m_nextFlush = Clock::time_point::max();
        return;
    }
    try {
        work();
        checkSink();
    } catch (...) {
        fail(std::current_exception());
    }
}

void WriterWorker::process(const SampleIntake::Sample &taken)
{
    if (!m_started) {
        m_started = true;
        m_nextFlush = Clock::now() + kFlushInterval;
    }
    m_tracks[taken.lane]->encode(taken.sample, taken.sample.presentationTime() - m_sessionStart);
}

void WriterWorker::flushIfDue()
{
    const auto now = Clock::now();
    if (now >= m_nextFlush || now >= stillFlush()) {
        m_lastFlush = now;
        m_nextFlush = now + kFlushInterval;
        fillMissingSound();
        if (m_muxer.hasFragment() || prepareFirstFlush()) {
            m_muxer.flush();
        }
    } else if (m_muxer.hasFragment() ? m_muxer.unflushedSize() > kMaxUnflushedSize : allTracksHavePackets()) {
        m_muxer.flush();
    }
}

/// When what nothing has followed so far is to be flushed.
WriterWorker::Clock::time_point WriterWorker::stillFlush() const
{
    const auto since = m_muxer.waitingSince();
    const bool canFlush = m_muxer.hasFragment() && !m_failed && !m_interrupted;
    return since && canFlush ? std::max(*since + kStillDelay, m_lastFlush + kLeastFlushInterval)
                             : Clock::time_point::max();
}

void WriterWorker::fillMissingSound()
{
    for (std::size_t i = 0; i < m_tracks.size(); ++i) {
        if (m_intake.isRealTime(i)) {
            m_tracks[i]->fillUntil(m_muxer.end() - kMaxSoundDelay);
        }
    }
}

bool WriterWorker::allTracksHavePackets() const
{
    for (std::size_t i = 0; i < m_tracks.size(); ++i) {
        if (!m_muxer.hasPackets(static_cast<int>(i))) {
            return false;
        }
    }
    return m_started;
}

/// The first flush tells where each track starts. Sound that has not come by now starts with silence; false
/// when a track is still to come that cannot do without its first sample.
bool WriterWorker::prepareFirstFlush()
{
    for (std::size_t i = 0; m_started && i < m_tracks.size(); ++i) {
        if (m_muxer.hasPackets(static_cast<int>(i))) {
            continue;
        }
        if (m_intake.isRealTime(i)) {
            m_tracks[i]->fillUntil(kOpeningSilence);
        } else if (!m_intake.isFinished(i)) {
            return false;
        }
    }
    return m_started;
}

void WriterWorker::complete()
{
    guarded([&] {
        for (const auto &track : m_tracks) {
            if (!track->hasContent()) {
                track->fillUntil(m_muxer.end());
            }
        }
        for (const auto &track : m_tracks) {
            track->finish();
        }
        if (m_mix) {
            m_mix->finish();
        }
        m_muxer.finish();
    });
    m_sink.close();
    if (m_sink.failure() != 0 && !m_interrupted && !m_failed) {
        fail(std::make_exception_ptr(PlatformError(writeFailureText(m_sink.failure()))));
    }
    // Where that does not work out (a full disk), the movie stays as it is: fragmented, and playable.
    makePlainMovie(m_path);
    if (!m_failed && !m_muxer.hasFragment()) {
        fail(std::make_exception_ptr(PlatformError(m_interrupted ? writeFailureText(m_sink.failure())
                                                                 : QStringLiteral("Nothing was recorded."))));
    }
}

void WriterWorker::checkSink()
{
    if (m_sink.failure() == 0) {
        return;
    }
    const PlatformError error(writeFailureText(m_sink.failure()));
    if (!m_events.interrupted) {
        throw error;
    }
    m_interrupted = true;
    m_events.interrupted(std::make_exception_ptr(error));
}

void WriterWorker::fail(std::exception_ptr error)
{
    m_failed = true;
    m_events.failed(std::move(error));
    m_intake.fail();
}

} // namespace zivra::desktop
