#pragma once

#include "desktop/media/PictureFitter.h"
#include "desktop/media/TrackEncoder.h"

#include <memory>

namespace zivra::desktop {

/// Encodes pictures that come at any pace, without delay: each picture's packet comes out at once, in the
/// order in which they are shown (no B-frames), so that a still screen is in the file at once and trims end
/// exactly.
class PictureEncoder : public TrackEncoder {
public:
    [[nodiscard]] const AVCodecParameters &parameters() const final { return *m_parameters; }
    [[nodiscard]] AVRational timeBase() const final { return kTimeBase; }
    [[nodiscard]] bool accepts(const MediaSample &sample) const final;
    void encode(const MediaSample &sample, MediaTime time) final;
    [[nodiscard]] bool hasContent() const final { return m_lastTime >= 0; }
    /// Nothing: there is no picture that would be right.
    void fillUntil(MediaTime time) final;

protected:
    static constexpr AVRational kTimeBase{1, 90'000};

    explicit PictureEncoder(const VideoSettings &settings);

    [[nodiscard]] const VideoSettings &settings() const { return m_settings; }
    void setParameters(CodecParametersPtr parameters) { m_parameters = std::move(parameters); }

private:
    /// `ticks`: of the time base; they rise.
    virtual void encodePicture(const std::shared_ptr<const VideoFrame> &picture, std::int64_t ticks) = 0;

    const VideoSettings m_settings;
    PictureFitter m_fitter;
    CodecParametersPtr m_parameters;
    std::int64_t m_lastTime = -1; ///< of the newest picture, in the time base
};

/// H.264 straight by libx264, which can be told what has changed, where the build has it; the rest by
/// libavcodec.
std::unique_ptr<PictureEncoder> makePictureEncoder(const VideoSettings &settings);

} // namespace zivra::desktop
