#pragma once

#include "platform/CaptureStream.h"

#include <QSize>

namespace zivra {

/// A source of one stream of samples: the picture of a display, the computer's sound, a microphone.
/// A capture stream is composed of these, so that another desktop's picture joins the same sound.
///
/// Samples and the end arrive on a thread of the source, one at a time. The handler must not block
/// for long and must not call back into the source. Destroying a source stops it and waits for a
/// handler that is running.
class CaptureSource {
public:
    using SampleHandler = std::function<void(MediaSample)>;
    /// Called at most once, when the source dies on its own.
    using EndHandler = std::function<void(std::exception_ptr)>;

    virtual ~CaptureSource() = default;

    /// Done when samples will come. A picture source fails with a `PlatformError` when it cannot
    /// capture; a sound source never fails, and delivers silence for a device that has gone.
    [[nodiscard]] virtual QFuture<void> start(SampleHandler onSample, EndHandler onEnd) = 0;
    /// Done when no further sample will come. Fine to call when the source has ended.
    [[nodiscard]] virtual QFuture<void> stop() = 0;
};

class PictureSourceFactory {
public:
    virtual ~PictureSourceFactory() = default;

    /// Reads the filter and, of the configuration, what concerns the picture.
    [[nodiscard]] virtual std::unique_ptr<CaptureSource>
    makePictureSource(const ContentFilter &filter, const CaptureConfiguration &configuration) = 0;
};

class CameraSourceFactory {
public:
    virtual ~CameraSourceFactory() = default;

    /// Complete frames of what the camera sees, at most 30 a second, in that size where the camera can do it,
    /// else in the best that it can. The source starts when frames come, and ends when the camera goes away.
    /// May be called on any thread. Throws `PlatformError` when there is no such camera.
    [[nodiscard]] virtual std::unique_ptr<CaptureSource> makeCameraSource(const QString &deviceID,
                                                                          QSize size) = 0;
};

class SoundSourceFactory {
public:
    virtual ~SoundSourceFactory() = default;

    /// What the computer plays, following the default output as it changes.
    [[nodiscard]] virtual std::unique_ptr<CaptureSource> makeSystemSoundSource(const AudioFormat &format) = 0;
    /// In the device's own rate and channel count. An absent device is the default one.
    [[nodiscard]] virtual std::unique_ptr<CaptureSource>
    makeMicrophoneSource(const std::optional<QString> &deviceID) = 0;
};

} // namespace zivra
