#pragma once

#include "platform/ContentFilter.h"

#include <QCoroTask>
#include <QRectF>
#include <QSizeF>
#include <QString>
#include <QUrl>

#include <exception>
#include <functional>
#include <optional>

namespace zivra {

/// What one take of the screen is told.
struct ScreenRecorderOptions {
    ContentFilter filter;
    std::optional<QRectF> sourceRect; ///< points, origin at the display's top left; absent: all of it
    QSizeF outputSize;                ///< pixels, finite and positive; fractions are cut off
    bool captureSystemAudio = false;
    std::optional<QString> microphoneID; ///< `CaptureDevice::uniqueID`; absent: no microphone
    bool showClicks = false;
    QUrl outputURL; ///< a file that does not exist yet
};

/// One take of the screen into one movie file. Main thread only.
///
/// In this order: `setErrorHandler()`, `start()`, any number of `pause()` and `resume()`, `stop()`; then it
/// is dropped. Dropping it earlier ends the take; what was written stays in the file.
class ScreenTake {
public:
    virtual ~ScreenTake() = default;

    /// Called when the take cannot go on, on any thread, perhaps more than once. `stop()` is still
    /// expected, and finishes what was written.
    virtual void setErrorHandler(std::function<void(std::exception_ptr)> handler) = 0;
    /// Done when capture has started; throws what the desktop reports.
    [[nodiscard]] virtual QCoro::Task<> start() = 0;
    /// Both return at once and take effect in order with the samples around them.
    virtual void pause() = 0;
    virtual void resume() = 0;
    /// Ends capture and finishes the file. Absent when there is no usable file; never throws.
    [[nodiscard]] virtual QCoro::Task<std::optional<QUrl>> stop() = 0;
};

} // namespace zivra
