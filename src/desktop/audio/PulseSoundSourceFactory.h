#pragma once

#include "desktop/audio/PulseConnection.h"
#include "platform/CaptureSources.h"

namespace zivra::desktop {

/// Sound from the user's sound server (PulseAudio, or one that speaks its protocol).
///
/// The sources of one factory share its connection and deliver on one thread of it. Starting one never
/// waits for the server. Devices that are missing, vanish or come back, and a server that does, are
/// bridged with silence. Main thread only.
class PulseSoundSourceFactory final : public SoundSourceFactory {
public:
    explicit PulseSoundSourceFactory(std::shared_ptr<PulseServer> server);

    [[nodiscard]] std::unique_ptr<CaptureSource> makeSystemSoundSource(const AudioFormat &format) override;
    /// `deviceID` is the server's name of the microphone. Without one, the source keeps to the microphone
    /// that was the default when its take began. What the computer plays is never taken for a microphone.
    [[nodiscard]] std::unique_ptr<CaptureSource>
    makeMicrophoneSource(const std::optional<QString> &deviceID) override;

private:
    std::shared_ptr<PulseServer> m_server;
};

} // namespace zivra::desktop
