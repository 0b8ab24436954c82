#pragma once

#include "platform/CaptureSources.h"

#include <QByteArray>
#include <QColor>
#include <QRectF>
#include <QSize>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace zivra::desktop {

/// The colour of a frame's pixel, computed back from BT.601 limited range.
QColor colourAt(const VideoFrame &frame, int x, int y);
/// Equal but for what converting there and back may lose.
bool isNear(QColor colour, std::uint32_t expected);

/// The RandR output of the first display, or the root window.
std::uint32_t firstDisplay(const QByteArray &displayName = {});
ContentFilter wholeDisplay(std::vector<std::uint32_t> without = {});
/// Unscaled, without the cursor.
CaptureConfiguration configuration(QRectF area, int framesPerSecond = 30);

/// Runs a picture source and keeps what it delivers: copies, or the source's own frames.
class Take {
public:
    enum class Frames { Copied, Held };

    Take(const ContentFilter &filter, const CaptureConfiguration &configuration,
         const QByteArray &displayName = {}, Frames frames = Frames::Copied);

    /// What `start()` failed with; empty when samples come.
    [[nodiscard]] QString startError() const { return m_startError; }
    /// Waits for the stop; false when it takes longer than a stop may.
    bool stop();

    using Check = std::function<bool(const VideoFrame &)>;
    /// Waits until a frame comes, or has come after the last wait, that passes the check.
    bool waitFor(const Check &check, std::chrono::milliseconds limit = std::chrono::seconds(5));
    bool waitForFrame();
    /// For one that repeats the one before.
    bool waitForRepetition();
    /// For the colour of one pixel.
    bool waitForColour(int x, int y, std::uint32_t colour);
    /// Whether the latest frame has that colour there.
    [[nodiscard]] bool shows(int x, int y, std::uint32_t colour) const;
    /// What the source said of its end; waits for it.
    QString waitForEnd();

    [[nodiscard]] std::vector<MediaSample> samples() const;
    /// Lets go of all frames, but counts them further on.
    void forgetFrames();

private:
    QString m_startError;
    mutable std::mutex m_mutex;
    std::condition_variable m_news;
    std::vector<MediaSample> m_samples;
    std::size_t m_seen = 0; ///< frames that `waitFor()` has looked at
    std::exception_ptr m_end;
    std::unique_ptr<CaptureSource> m_source; ///< last: it ends before the rest goes
};

} // namespace zivra::desktop
