#pragma once

#include "platform/MediaClock.h"

#include <QTimer>

#include <functional>
#include <optional>

namespace zivra {

/// Counts the seconds of a take without its pauses, and tells them four times a second until it is stopped.
class TakeStopwatch {
public:
    TakeStopwatch(const MediaClock &clock, std::function<void(double)> onSeconds);

    void start();
    void pause();
    void resume();
    void stop();

private:
    [[nodiscard]] double open() const;

    const MediaClock &m_clock;
    std::function<void(double)> m_onSeconds;
    QTimer m_ticker;
    double m_closed = 0;                     ///< seconds of the closed segments
    std::optional<MediaTime> m_segmentStart; ///< absent while paused
};

} // namespace zivra
