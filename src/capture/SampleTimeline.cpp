#include "capture/SampleTimeline.h"

#include <utility>

namespace zivra {

void SampleTimeline::resume()
{
    m_paused = false;
    m_resyncAfterPause = true;
}

void SampleTimeline::pass(MediaTime raw)
{
    if (std::exchange(m_resyncAfterPause, false) && m_lastRaw.isValid()) {
        m_offset = m_offset + (raw - m_lastRaw);
    }
    if (!m_lastRaw.isValid() || raw > m_lastRaw) {
        m_lastRaw = raw;
    }
}

} // namespace zivra
