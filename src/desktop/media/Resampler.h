#pragma once

#include "platform/MediaSample.h"

#include <memory>
#include <span>
#include <vector>

struct SwrContext;

namespace zivra::desktop {

/// Turns interleaved float sound of one rate and number of channels into another, in pieces. The first
/// sample out belongs to the same moment as the first sample in. Used by one thread at a time.
class Resampler {
public:
    /// Throws `PlatformError` for formats that cannot be converted.
    Resampler(const AudioFormat &from, const AudioFormat &to);

    [[nodiscard]] const AudioFormat &from() const { return m_from; }

    /// Appends to `output` what can be told so far.
    void convert(std::span<const float> input, std::vector<float> &output);
    /// Appends the rest; then the resampler is as new.
    void drain(std::vector<float> &output);
    /// What is inside, in frames of the output.
    [[nodiscard]] std::int64_t delay() const;

private:
    struct SwrDeleter {
        void operator()(SwrContext *context) const;
    };

    void run(const float *input, int frames, std::vector<float> &output);
    void initialise();

    const AudioFormat m_from;
    const AudioFormat m_to;
    std::unique_ptr<SwrContext, SwrDeleter> m_context; ///< null: the formats are the same
};

} // namespace zivra::desktop
