#pragma once

#include "platform/MediaTime.h"

namespace zivra {

/// Maps the capture clock, which runs on during a pause, to a gapless timeline of the file: one offset,
/// shared by all streams, holds all the time that was cut out.
///
/// The first sample after a pause, of whatever stream, is put at the file time of the last one before it,
/// so the cut takes the whole span between the two, however it divides into pause and delivery lag.
class SampleTimeline {
public:
    void pause() { m_paused = true; }
    void resume();

    /// Nothing that is captured now belongs into the file.
    [[nodiscard]] bool isPaused() const { return m_paused; }
    /// Learns of a sample at `raw` on the capture clock that arrived outside of a pause.
    void pass(MediaTime raw);
    /// What lies between the capture clock and the file's timeline; to be subtracted.
    [[nodiscard]] MediaTime offset() const { return m_offset; }

private:
    bool m_paused = false;
    bool m_resyncAfterPause = false; ///< the next sample closes the gap
    MediaTime m_offset = MediaTime::zero();
    MediaTime m_lastRaw; ///< the highest so far; invalid before the first sample
};

} // namespace zivra
