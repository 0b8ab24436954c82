#include "desktop/audio/PulseDeviceCatalog.h"
#include "desktop/audio/PulseSoundSourceFactory.h"
#include "desktop/audio/SoundRecording.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>

namespace zivra::desktop::test {

namespace {

constexpr AudioFormat kSystemFormat{.sampleRate = 48000, .channels = 2};
constexpr double kOutputTone = 440;
constexpr double kOtherTone = 600;
constexpr double kMicrophoneTone = 1000;

class PulseSound : public testing::Test {
protected:
    void startServer()
    {
        m_server.start();
        connect();
    }
    void connect()
    {
        const auto server = connectToPulseServer();
        m_factory.emplace(server);
        m_catalog.emplace(server);
    }
    std::unique_ptr<CaptureSource> systemSound() { return m_factory->makeSystemSoundSource(kSystemFormat); }
    std::unique_ptr<CaptureSource> microphone(const std::optional<QString> &id = std::nullopt)
    {
        return m_factory->makeMicrophoneSource(id);
    }
    [[nodiscard]] std::vector<CaptureDevice> devices() const { return m_catalog->devices(MediaType::Audio); }
    [[nodiscard]] std::optional<CaptureDevice> standard() const
    {
        return m_catalog->defaultDevice(MediaType::Audio);
    }

    PrivateSoundServer m_server;
    std::optional<PulseSoundSourceFactory> m_factory;
    std::optional<PulseDeviceCatalog> m_catalog;
};

TEST_F(PulseSound, KeepsSystemSoundAndMicrophoneApart)
{
    startServer();
    const SoundPlayer output("out", kOutputTone);
    const SoundPlayer voice("mic_feed", kMicrophoneTone);
    SoundRecording system(systemSound());
    SoundRecording mic(microphone());
    SoundRecording monitor(microphone("out.monitor"));

    EXPECT_TRUE(system.comesToHear(kOutputTone));
    EXPECT_TRUE(mic.comesToHear(kMicrophoneTone));
    EXPECT_LT(system.level(kMicrophoneTone), 0.01);
    EXPECT_LT(mic.level(kOutputTone), 0.01);
    EXPECT_TRUE(monitor.comesToBeSilent()) << "what is played is no microphone";
    EXPECT_EQ(system.format(), kSystemFormat);
    EXPECT_EQ(mic.format(), (AudioFormat{.sampleRate = 32000, .channels = 1}));
    system.expectUnbroken();
    mic.expectUnbroken();
}

TEST_F(PulseSound, StampsSoundWithTheTimeItIsHeard)
{
    startServer();
    const auto errorOf = [](std::unique_ptr<CaptureSource> source, const char *output) {
        const SoundPlayer player(output, SoundPlayer::kImpulses);
        SoundRecording recording(std::move(source));
        const auto error = [&] { return std::abs(recording.impulseTime() - player.impulseTime()); };
        recording.goOn(MediaTime::fromMilliseconds(1500));
        // The latest impulse played may not have been heard yet.
        EXPECT_TRUE(comesTrue([&] { return error() < 200'000'000; }));
        return static_cast<double>(error()) / 1e6;
    };
    EXPECT_LT(errorOf(systemSound(), "out"), 20);
    // The server's remapping hides some 15 ms of buffer from the latency it tells.
    EXPECT_LT(errorOf(microphone(), "mic_feed"), 30);
}

TEST_F(PulseSound, FollowsTheDefaultOutput)
{
    startServer();
    m_server.control("load-module module-null-sink sink_name=other norewinds=1");
    const SoundPlayer first("out", kOutputTone);
    const SoundPlayer second("other", kOtherTone);
    const SoundPlayer voice("mic_feed", kMicrophoneTone);
    SoundRecording system(systemSound());
    EXPECT_TRUE(system.comesToHear(kOutputTone));

    m_server.control("set-default-sink other");
    EXPECT_TRUE(system.comesToHear(kOtherTone));

    m_server.control("set-default-sink out");
    m_server.control("set-default-sink other");
    system.goOn(MediaTime::fromMilliseconds(800));
    EXPECT_TRUE(system.comesToHear(kOtherTone));
    m_server.control("unload-module module-null-sink");
    EXPECT_TRUE(system.comesToBeSilent());
    system.goOn(MediaTime::fromMilliseconds(500));
    EXPECT_LT(system.level(kMicrophoneTone), 0.01);
    system.expectUnbroken();
}

TEST_F(PulseSound, WaitsForItsMicrophoneInSilence)
{
    startServer();
    const SoundPlayer output("out", kOutputTone);
    const SoundPlayer voice("mic_feed", kMicrophoneTone);
    SoundRecording named(microphone("mic"));
    SoundRecording standard(microphone());
    EXPECT_TRUE(named.comesToHear(kMicrophoneTone));
    EXPECT_TRUE(standard.comesToHear(kMicrophoneTone));

    m_server.control("load-module module-remap-source master=out.monitor source_name=other");
    m_server.control("unload-module module-remap-source");
    EXPECT_TRUE(named.comesToBeSilent());
    EXPECT_TRUE(standard.comesToBeSilent());
    m_server.control(kLoadMicrophone);
    EXPECT_TRUE(named.comesToHear(kMicrophoneTone));
    EXPECT_TRUE(standard.comesToHear(kMicrophoneTone));

    // A suspended device is there and delivers nothing.
    m_server.control("suspend-source mic 1");
    EXPECT_TRUE(named.comesToBeSilent());
    m_server.control("suspend-source mic 0");
    EXPECT_TRUE(named.comesToHear(kMicrophoneTone));
    named.expectUnbroken();
    standard.expectUnbroken();
}

TEST_F(PulseSound, OutlivesTheServer)
{
    startServer();
    SoundRecording system(systemSound());
    SoundRecording mic(microphone());
    system.goOn(MediaTime::fromMilliseconds(300));
    mic.goOn(MediaTime::fromMilliseconds(300));

    m_server.kill();
    system.goOn(MediaTime::fromMilliseconds(1000));
    mic.goOn(MediaTime::fromMilliseconds(1000));

    m_server.start();
    const SoundPlayer output("out", kOutputTone);
    const SoundPlayer voice("mic_feed", kMicrophoneTone);
    EXPECT_TRUE(system.comesToHear(kOutputTone));
    EXPECT_TRUE(mic.comesToHear(kMicrophoneTone));
    system.expectUnbroken();
    mic.expectUnbroken();
}

TEST_F(PulseSound, IsSilentWithoutAServer)
{
    connect();
    SoundRecording system(systemSound());
    SoundRecording mic(microphone());
    EXPECT_EQ(system.format(), kSystemFormat);
    EXPECT_EQ(mic.format(), (AudioFormat{.sampleRate = 48000, .channels = 1}));
    EXPECT_TRUE(system.comesToBeSilent());
    EXPECT_TRUE(devices().empty());
    EXPECT_EQ(standard(), std::nullopt);

    m_server.start();
    const SoundPlayer voice("mic_feed", kMicrophoneTone);
    EXPECT_TRUE(mic.comesToHear(kMicrophoneTone));
    mic.expectUnbroken();
    system.expectUnbroken();
}

TEST_F(PulseSound, ListsTheMicrophonesAsTheyChange)
{
    const CaptureDevice desk{.uniqueID = "mic", .name = "Desk"};
    startServer();
    EXPECT_EQ(devices(), std::vector{desk}) << "asked before the first answer";
    EXPECT_EQ(standard(), desk);
    EXPECT_TRUE(m_catalog->devices(MediaType::Video).empty());

    int changes = 0;
    m_catalog->setChangeHandler([&] { ++changes; });
    const auto changed = [&] { return std::exchange(changes, 0) > 0; };
    EXPECT_TRUE(comesTrue(changed)) << "the first answer is a change";

    m_server.control("set-default-source out.monitor");
    m_server.control("load-module module-remap-source master=mic_feed.monitor source_name=second");
    EXPECT_TRUE(comesTrue([&] { return changed() && devices().size() == 2; }));
    EXPECT_EQ(standard(), desk) << "a monitor is no microphone";
    m_server.control("set-default-source second");
    EXPECT_TRUE(comesTrue([&] { return changed() && standard()->uniqueID == "second"; }));
    m_server.control("unload-module module-remap-source");
    EXPECT_TRUE(comesTrue([&] { return changed() && devices().empty(); }));
    EXPECT_EQ(standard(), std::nullopt);

    m_server.kill();
    m_server.start();
    EXPECT_TRUE(comesTrue([&] { return devices() == std::vector{desk}; })) << "asks again";
}

} // namespace

} // namespace zivra::desktop::test
