#pragma once

#include "platform/CaptureSources.h"

#include <cstddef>

namespace zivra::desktop {

/// Makes an unbroken run of short blocks out of sound that comes with breaks: what is missing becomes
/// silence, and what comes for a time that has been delivered already is left out.
///
/// Used on one thread at a time, on which the handler is called.
class ContinuousSound {
public:
    ContinuousSound(const AudioFormat &format, CaptureSource::SampleHandler handler);

    [[nodiscard]] const AudioFormat &format() const { return m_format; }
    /// The time that has been delivered up to; invalid before the first block.
    [[nodiscard]] MediaTime end() const { return m_end; }
    /// Where the run begins when it begins with silence. Only before the first block.
    void begin(MediaTime time) { m_end = time; }

    /// Sound captured from `start` on. Null samples are silence.
    void deliver(MediaTime start, const float *samples, std::size_t frames);
    /// Whole blocks of silence, ending at `until` or somewhat before it. Only after the beginning.
    void fill(MediaTime until);

private:
    void deliverBlocks(const float *samples, std::size_t frames);
    [[nodiscard]] MediaTime durationOf(std::size_t frames) const;
    [[nodiscard]] std::size_t framesIn(MediaTime duration) const;

    AudioFormat m_format;
    CaptureSource::SampleHandler m_handler;
    std::size_t m_blockFrames;
    MediaTime m_end;
};

} // namespace zivra::desktop
