#pragma once

#include "desktop/audio/PulseHandles.h"
#include "desktop/audio/SoundClock.h"
#include "platform/MediaSample.h"

#include <cstddef>
#include <functional>
#include <string>

namespace zivra::desktop {

/// A running record of one input of the sound server, which it never leaves for another.
///
/// Lives under the loop's lock (see `PulseServer`).
class PulseRecordStream {
public:
    /// Called on the loop's thread with what was captured from `start` on; null samples are silence, and
    /// the others are valid during the call.
    using SoundHandler = std::function<void(MediaTime start, const float *samples, std::size_t frames)>;

    /// Starts to record; the server converts to `format`. The context must be connected.
    PulseRecordStream(pa_context *context, std::string inputName, const AudioFormat &format,
                      const pa_channel_map &channelMap, const char *title, SoundHandler onSound);

    [[nodiscard]] const std::string &inputName() const { return m_inputName; }
    /// The server has ended it, or refused it. No sound comes any more.
    [[nodiscard]] bool isLost() const { return m_isLost; }
    /// Says that frames were lost, so that the time stamps start afresh.
    void restartClock();

private:
    void stateChanged();
    void read();
    void pass(MediaTime measured, const void *data, std::size_t bytes);
    [[nodiscard]] bool recordsItsInput() const;
    static PulseRecordStream &from(void *self) { return *static_cast<PulseRecordStream *>(self); }

    std::string m_inputName;
    pa_sample_spec m_sampleSpec;
    SoundHandler m_onSound;
    SoundClock m_clock;
    bool m_isLost = false;
    PulseStreamHandle m_stream;
};

} // namespace zivra::desktop
