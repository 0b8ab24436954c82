#include "desktop/audio/PrivateSoundServer.h"
#include "desktop/audio/PulseDeviceCatalog.h"
#include "desktop/audio/SoundRecording.h"

#include <QElapsedTimer>

#include <gtest/gtest.h>

namespace zivra::desktop::test {

namespace {

const CaptureDevice kMicrophone{.uniqueID = "mic", .name = "Desk"};

TEST(Microphones, FollowTheServer)
{
    PrivateSoundServer server;
    server.start();
    PulseDeviceCatalog catalog(connectToPulseServer());
    EXPECT_EQ(catalog.devices(MediaType::Audio), std::vector{kMicrophone}) << "asked before the first answer";
    EXPECT_EQ(catalog.defaultDevice(MediaType::Audio), kMicrophone);
    EXPECT_TRUE(catalog.devices(MediaType::Video).empty());

    int changes = 0;
    catalog.setChangeHandler([&] { ++changes; });
    const auto changed = [&] { return std::exchange(changes, 0) > 0; };
    EXPECT_TRUE(comesTrue(changed)) << "the first answer is a change";

    server.control("set-default-source out.monitor");
    server.control("load-module module-remap-source master=mic_feed.monitor source_name=second");
    EXPECT_TRUE(comesTrue([&] { return catalog.devices(MediaType::Audio).size() == 2; }));
    EXPECT_TRUE(comesTrue(changed));
    EXPECT_EQ(catalog.defaultDevice(MediaType::Audio), kMicrophone) << "a monitor is no microphone";
    server.control("set-default-source second");
    EXPECT_TRUE(comesTrue(changed));
    EXPECT_EQ(catalog.defaultDevice(MediaType::Audio)->uniqueID, "second");

    server.control("unload-module module-remap-source");
    EXPECT_TRUE(comesTrue([&] { return changed() && catalog.devices(MediaType::Audio).empty(); }));
    EXPECT_EQ(catalog.defaultDevice(MediaType::Audio), std::nullopt);

    server.kill();
    server.start();
    EXPECT_TRUE(comesTrue([&] { return catalog.devices(MediaType::Audio).size() == 1; })) << "asks again";
}

TEST(Microphones, AreNoneWithoutAServer)
{
    const PrivateSoundServer server;
    PulseDeviceCatalog catalog(connectToPulseServer());
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < 100; ++i) {
        EXPECT_TRUE(catalog.devices(MediaType::Audio).empty());
        EXPECT_EQ(catalog.defaultDevice(MediaType::Audio), std::nullopt);
    }
    EXPECT_LT(timer.elapsed(), 2000) << "no call waits for a server that is not there";
}

} // namespace

} // namespace zivra::desktop::test
