#pragma once

#include "platform/CaptureSources.h"

namespace zivra::desktop {

/// Makes capture streams out of one picture source and up to two sound sources.
///
/// Streams are made, used and destroyed on the main thread. A stream opens a sound source only when an output
/// wants it. Sound sources begin together with the picture and never hold its first frame back; how a sound
/// source ends does not end the stream.
class ComposedCaptureStreamFactory final : public CaptureStreamFactory {
public:
    /// Both must outlive the streams.
    ComposedCaptureStreamFactory(PictureSourceFactory &pictures, SoundSourceFactory &sounds)
        : m_pictures(pictures),
          m_sounds(sounds)
    {
    }

    [[nodiscard]] std::unique_ptr<CaptureStream> makeStream(const ContentFilter &filter,
                                                            const CaptureConfiguration &configuration,
                                                            CaptureStream::StopHandler onStop) override;

private:
    PictureSourceFactory &m_pictures;
    SoundSourceFactory &m_sounds;
};

} // namespace zivra::desktop
