#include "desktop/audio/PrivateSoundServer.h"
#include "desktop/audio/PulseDeviceCatalog.h"
#include "desktop/audio/PulseSoundSourceFactory.h"
#include "desktop/audio/SoundRecording.h"

#include <gtest/gtest.h>

#include <optional>

/// libpulse recycles memory among threads in ways that the thread sanitizer cannot see; its locks stay
/// visible. Read by the sanitizer's library, if there is one.
extern "C" const char *__tsan_default_options() // NOLINT(bugprone-reserved-identifier): the library's name
{
    return "ignore_interceptors_accesses=1";
}

namespace zivra::desktop::test {

namespace {

constexpr AudioFormat kSystemFormat{.sampleRate = 48000, .channels = 2};

/// Connected to the private server, which must be there before or come later.
struct Sounds {
    std::shared_ptr<PulseServer> server = connectToPulseServer();
    PulseSoundSourceFactory factory{server};
    PulseDeviceCatalog catalog{server};

    SoundRecording system() { return SoundRecording(factory.makeSystemSoundSource(kSystemFormat)); }
    SoundRecording microphone(const std::optional<QString> &id = std::nullopt)
    {
        return SoundRecording(factory.makeMicrophoneSource(id));
    }
    [[nodiscard]] std::vector<CaptureDevice> devices() const { return catalog.devices(MediaType::Audio); }
    [[nodiscard]] std::optional<CaptureDevice> standard() const
    {
        return catalog.defaultDevice(MediaType::Audio);
    }
};

TEST(PulseSound, FollowsTheDefaultOutputAndHearsNoMicrophone)
{
    PrivateSoundServer server;
    server.start();
    Sounds sounds;
    server.control("load-module module-null-sink sink_name=other norewinds=1");
    server.control("load-module module-sine sink=other frequency=600");
    const auto system = sounds.system();
    EXPECT_TRUE(system.comesToHear(kOutputTone));
    EXPECT_LT(system.level(kMicrophoneTone), 0.01);

    server.control("set-default-sink other");
    EXPECT_TRUE(system.comesToHear(600));
    server.control("set-default-sink out");
    server.control("set-default-sink other");
    system.goOn();
    EXPECT_TRUE(system.comesToHear(600));
    server.control("unload-module module-null-sink");
    EXPECT_TRUE(system.comesToBeSilent());
    system.goOn();
    EXPECT_LT(system.level(kMicrophoneTone), 0.01);
}

TEST(PulseSound, WaitsForItsMicrophoneInSilence)
{
    PrivateSoundServer server;
    server.start();
    Sounds sounds;
    const auto named = sounds.microphone("mic");
    const auto unnamed = sounds.microphone();
    const auto monitor = sounds.microphone("out.monitor");
    EXPECT_TRUE(named.comesToHear(kMicrophoneTone));
    EXPECT_TRUE(unnamed.comesToHear(kMicrophoneTone));
    EXPECT_LT(named.level(kOutputTone), 0.01);
    EXPECT_TRUE(monitor.comesToBeSilent()) << "what is played is no microphone";

    server.control("load-module module-remap-source master=out.monitor source_name=other");
    server.control("unload-module module-remap-source");
    EXPECT_TRUE(named.comesToBeSilent());
    EXPECT_TRUE(unnamed.comesToBeSilent());
    server.control(kLoadMicrophone);
    EXPECT_TRUE(named.comesToHear(kMicrophoneTone));
    EXPECT_TRUE(unnamed.comesToHear(kMicrophoneTone));

    // A suspended device is there and delivers nothing.
    server.control("suspend-source mic 1");
    EXPECT_TRUE(named.comesToBeSilent());
    server.control("suspend-source mic 0");
    EXPECT_TRUE(named.comesToHear(kMicrophoneTone));
}

TEST(PulseSound, IsSilentWithoutAServerAndWaitsForOne)
{
    PrivateSoundServer server;
    Sounds sounds;
    const auto system = sounds.system();
    const auto mic = sounds.microphone();
    EXPECT_EQ(system.format(), kSystemFormat);
    EXPECT_TRUE(system.comesToBeSilent());
    EXPECT_EQ(sounds.standard(), std::nullopt);
    for (int start = 0; start < 2; ++start) {
        server.start();
        EXPECT_TRUE(system.comesToHear(kOutputTone));
        EXPECT_TRUE(mic.comesToHear(kMicrophoneTone));
        EXPECT_TRUE(eventually([&] { return sounds.devices().size() == 1; }));
        server.kill();
        system.goOn();
        mic.goOn();
    }
}

TEST(PulseSound, ListsTheMicrophonesAsTheyChange)
{
    PrivateSoundServer server;
    server.start();
    Sounds sounds;
    const CaptureDevice desk{.uniqueID = "mic", .name = "Desk"};
    EXPECT_EQ(sounds.devices(), std::vector{desk}) << "asked before the first answer";
    EXPECT_EQ(sounds.standard(), desk);
    int changes = 0;
    sounds.catalog.setChangeHandler([&] { ++changes; });
    const auto changed = [&] { return std::exchange(changes, 0) > 0; };
    EXPECT_EQ(sounds.microphone().format(), (AudioFormat{.sampleRate = 32000, .channels = 1}));

    server.control("set-default-source out.monitor");
    server.control("load-module module-remap-source master=mic_feed.monitor source_name=second");
    EXPECT_TRUE(eventually([&] { return changed() && sounds.devices().size() == 2; }));
    EXPECT_EQ(sounds.standard(), desk) << "a monitor is no microphone";
    server.control("set-default-source second");
    EXPECT_TRUE(eventually([&] { return changed() && sounds.standard()->uniqueID == "second"; }));
    server.control("unload-module module-remap-source");
    EXPECT_TRUE(eventually([&] { return changed() && sounds.devices().empty(); }));
    EXPECT_EQ(sounds.standard(), std::nullopt);
}

} // namespace

} // namespace zivra::desktop::test
