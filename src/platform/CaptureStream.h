#pragma once

#include "platform/ContentFilter.h"
#include "platform/MediaSample.h"
#include "platform/SerialQueue.h"

#include <QFuture>
#include <QRectF>
#include <QSize>
#include <QString>

#include <exception>
#include <functional>
#include <memory>
#include <optional>

namespace zivra {

enum class CaptureOutput { Screen, Audio, Microphone };

/// How a stream captures.
struct CaptureConfiguration {
    QSize outputSize;                 ///< pixels, even and at least 2 by 2; the picture is scaled to it
    std::optional<QRectF> sourceRect; ///< points, origin at the display's top left; absent: all of it
    MediaTime minimumFrameInterval;   ///< no two frames come closer together
    int queueDepth = 6;               ///< frames that may be in flight; a further one is dropped
    bool showsCursor = true;
    bool showsMouseClicks = false; ///< a ring at each press
    bool capturesAudio = false;    ///< the computer's sound
    bool excludesCurrentProcessAudio = true;
    double sampleRate = 48000; ///< of the computer's sound, frames a second
    int channelCount = 2;      ///< of the computer's sound
    bool capturesMicrophone = false;
    std::optional<QString> microphoneDeviceID; ///< `CaptureDevice::uniqueID`; absent: the default one
};

/// A running capture of a display or of windows, with its sound. Made, given its outputs, started
/// once, stopped once; destroying it stops it.
///
/// The first frame is complete and comes at once. A changed picture comes as a complete frame, an
/// unchanged one as an idle frame at most; once a second an unchanged picture is repeated as complete, and
/// once more when the stream is stopped, so that durations are true. Every time lies on the `MediaClock`.
/// Samples come on the queue that the output was added with and never after `stop()` has finished.
class CaptureStream {
public:
    using SampleHandler = std::function<void(const MediaSample &, CaptureOutput)>;
    /// Called at most once, on a thread of the stream, when the capture dies on its own.
    using StopHandler = std::function<void(std::exception_ptr)>;

    virtual ~CaptureStream() = default;

    /// Throws `PlatformError` when this stream cannot deliver that output.
    virtual void addOutput(CaptureOutput type, std::shared_ptr<SerialQueue> queue, SampleHandler handler) = 0;
    /// Done when capture runs; fails with a `PlatformError`. A sound device that is missing or goes
    /// away is no failure: its output then delivers nothing, or silence.
    [[nodiscard]] virtual QFuture<void> startCapture() = 0;
    /// Done when the last sample has been handed to its queue.
    [[nodiscard]] virtual QFuture<void> stopCapture() = 0;
};

class CaptureStreamFactory {
public:
    virtual ~CaptureStreamFactory() = default;

    [[nodiscard]] virtual std::unique_ptr<CaptureStream> makeStream(const ContentFilter &filter,
                                                                    const CaptureConfiguration &configuration,
                                                                    CaptureStream::StopHandler onStop) = 0;
};

} // namespace zivra
