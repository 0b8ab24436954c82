#include "app/TakeStopwatch.h"

#include <chrono>
#include <utility>

namespace zivra {

TakeStopwatch::TakeStopwatch(const MediaClock &clock, std::function<void(double)> onSeconds)
    : m_clock(clock),
      m_onSeconds(std::move(onSeconds))
{
    m_ticker.setInterval(std::chrono::milliseconds(250));
    m_ticker.callOnTimeout([this] { m_onSeconds(m_closed + open()); });
}

void TakeStopwatch::start()
{
    m_closed = 0;
    m_onSeconds(0);
    resume();
    m_ticker.start();
}

void TakeStopwatch::pause()
{
    m_closed += open();
    m_segmentStart.reset();
}

void TakeStopwatch::resume()
{
    m_segmentStart = m_clock.now();
}

void TakeStopwatch::stop()
{
    m_ticker.stop();
}

double TakeStopwatch::open() const
{
    return m_segmentStart ? (m_clock.now() - *m_segmentStart).seconds() : 0;
}

} // namespace zivra
