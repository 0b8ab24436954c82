#include "desktop/audio/PulseSoundSourceFactory.h"

#include "desktop/audio/PulseSoundSource.h"

#include <utility>

namespace zivra::desktop {

std::shared_ptr<PulseServer> connectToPulseServer()
{
    return std::make_shared<PulseServer>();
}

PulseSoundSourceFactory::PulseSoundSourceFactory(std::shared_ptr<PulseServer> server)
    : m_server(std::move(server))
{
}

std::unique_ptr<CaptureSource> PulseSoundSourceFactory::makeSystemSoundSource(const AudioFormat &format)
{
    return std::make_unique<PulseSoundSource>(
        m_server,
        PulseSoundChoice{.input = &monitorOfDefaultOutput, .format = format, .title = "System sound"});
}

std::unique_ptr<CaptureSource>
PulseSoundSourceFactory::makeMicrophoneSource(const std::optional<QString> &deviceID)
{
    std::optional<std::string> wanted;
    if (deviceID) {
        wanted = deviceID->toStdString();
    }
    const auto choose = [wanted](const PulseDevices &devices) mutable -> const PulseInput * {
        const auto *input = wanted ? microphoneNamed(devices, *wanted) : defaultMicrophone(devices);
        if (input != nullptr) {
            wanted = input->name;
        }
        return input;
    };
    return std::make_unique<PulseSoundSource>(
        m_server, PulseSoundChoice{.input = choose, .format = std::nullopt, .title = "Microphone"});
}

} // namespace zivra::desktop
