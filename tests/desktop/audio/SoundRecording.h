#pragma once

#include "platform/CaptureSources.h"

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace zivra::desktop::test {

/// A running source and all that it has delivered.
class SoundRecording {
public:
    explicit SoundRecording(std::unique_ptr<CaptureSource> source);

    [[nodiscard]] std::vector<MediaSample> samples() const;
    [[nodiscard]] AudioFormat format() const { return samples().front().audioFormat().value(); }
    /// Amplitude of a tone in the latest 0.3 s; 0 as long as less was recorded.
    [[nodiscard]] double level(double frequency) const;
    /// Within ten seconds.
    [[nodiscard]] bool comesToHear(double frequency) const;
    [[nodiscard]] bool comesToBeSilent() const;
    /// Lets it deliver another stretch of this length, at most ten seconds long.
    void goOn(MediaTime duration) const;
    /// When the latest impulse was heard, in nanoseconds; 0 when none was.
    [[nodiscard]] std::int64_t impulseTime() const;
    /// Stops, and expects every block to follow on the one before to a few milliseconds, in one format.
    void expectUnbroken();

private:
    [[nodiscard]] std::vector<float> latest() const;

    mutable std::mutex m_mutex;
    std::vector<MediaSample> m_samples;
    std::unique_ptr<CaptureSource> m_source; ///< last: it stops before the rest goes
};

[[nodiscard]] bool comesTrue(const std::function<bool()> &condition);

} // namespace zivra::desktop::test
