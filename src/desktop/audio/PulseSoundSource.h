#pragma once

#include "desktop/audio/ContinuousSound.h"
#include "desktop/audio/PulseRecordStream.h"
#include "desktop/audio/PulseServer.h"
#include "platform/CaptureSources.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace zivra::desktop {

/// Which input a source records, and how.
struct PulseSoundChoice {
    /// The input to record now; null when there is none. Asked again after every change on the server; may
    /// keep its decision. Called on the loop's thread or under its lock.
    std::function<const PulseInput *(const PulseDevices &)> input;
    /// Absent: as the first input recorded has it, and 48000 Hz mono when silence comes first.
    std::optional<AudioFormat> format;
    std::string title; ///< what the server's mixers show
};

/// Records one input of the sound server after the other as the choice falls on them, with silence for
/// the times when there is none. All blocks of a take have one format.
///
/// Samples come on the thread of the `PulseServer`, under its lock; the end never comes. Used for one take.
class PulseSoundSource final : public CaptureSource, private PulseListener {
public:
    PulseSoundSource(std::shared_ptr<PulseServer> server, PulseSoundChoice choice);
    ~PulseSoundSource() override;
    PulseSoundSource(const PulseSoundSource &) = delete;
    PulseSoundSource &operator=(const PulseSoundSource &) = delete;

    /// Done at once: silence comes until the server has answered, when that takes long.
    [[nodiscard]] QFuture<void> start(SampleHandler onSample, EndHandler onEnd) override;
    [[nodiscard]] QFuture<void> stop() override;

private:
    void serverChanged() override;
    void endTake();
    void tick();
    void fillWithSilence();
    void recordWhatIsChosen();
    void record(const PulseInput &input);
    void receive(MediaTime start, const float *samples, std::size_t frames);
    void dropLostRecord();
    void armTimer();
    void settleFormat(const AudioFormat &format);

    std::shared_ptr<PulseServer> m_server;
    PulseSoundChoice m_choice;

    // Under the server's lock.
    SampleHandler m_onSample; ///< empty when no take runs
    MediaTime m_startTime;
    std::optional<ContinuousSound> m_sound; ///< absent until the format is known
    pa_channel_map m_channelMap{};
    MediaTime m_allowance; ///< how far behind the clock sound may be before silence takes its place
    std::unique_ptr<PulseRecordStream> m_record;
    std::string m_lostInput; ///< not tried again before `m_retryTime`
    MediaTime m_retryTime;
    std::optional<PulseTimer> m_timer;
    MediaTime m_timerDue;
};

} // namespace zivra::desktop
