#pragma once

#include "desktop/media/FileSink.h"
#include "desktop/media/FragmentMuxer.h"
#include "desktop/media/LiveMix.h"
#include "desktop/media/SampleIntake.h"
#include "desktop/media/TrackEncoder.h"

#include <exception>
#include <functional>
#include <memory>
#include <vector>

namespace zivra::desktop {

/// The thread's part of a movie writer: takes samples from the intake, has them encoded and muxed,
/// and flushes the file every second by the clock on the wall, whether samples come or not.
class WriterWorker {
public:
    /// Its number is that of its lane in the intake and of its track in the file.
    using Tracks = std::vector<std::unique_ptr<TrackEncoder>>;

    /// Called on the worker's thread.
    struct Events {
        std::function<void(std::exception_ptr)> interrupted; ///< at most once; unset: it fails
        std::function<void(std::exception_ptr)> failed;      ///< at most once
    };

    /// Creates the file and opens the encoders; throws `PlatformError`. `tracks` and `intake` outlive it.
    WriterWorker(const QString &path, MovieFileType type, const Tracks &tracks, SampleIntake &intake,
                 Events events);

    /// Before the first sample comes.
    void setSessionStart(MediaTime start) { m_sessionStart = start; }

    /// Works until the intake is drained or stopped. Returns whether the file was completed.
    bool run();

private:
    using Clock = SampleIntake::Clock;

    void openTracks();
    void openMix();
    void process(const SampleIntake::Sample &taken);
    void flushIfDue();
    [[nodiscard]] Clock::time_point stillFlush() const;
    void fillMissingSound();
    [[nodiscard]] bool allTracksHavePackets() const;
    [[nodiscard]] bool prepareFirstFlush();
    void complete();
    void checkSink();
    void fail(std::exception_ptr error);
    template <typename Work>
    void guarded(Work work);

    const QString m_path;
    const Tracks &m_tracks;
    SampleIntake &m_intake;
    const Events m_events;
    MediaTime m_sessionStart;
    FileSink m_sink;
    FragmentMuxer m_muxer;
    std::unique_ptr<LiveMix> m_mix; ///< null: there is nothing to mix
    Clock::time_point m_nextFlush;
    Clock::time_point m_lastFlush;
    bool m_started = false; ///< a sample has come
    bool m_interrupted = false;
    bool m_failed = false;
};

} // namespace zivra::desktop
