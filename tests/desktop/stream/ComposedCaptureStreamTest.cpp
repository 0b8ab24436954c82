#include "desktop/stream/ComposedCaptureStream.h"

#include "desktop/threads/ThreadSerialQueue.h"
#include "platform/PlatformError.h"
#include "support/Eventually.h"

#include <QPromise>

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <stop_token>
#include <thread>

namespace zivra::desktop {
namespace {

using namespace std::chrono_literals;

/// What the fake sources do and what became of them.
struct Scene {
    std::chrono::milliseconds soundStartTakes{0};
    bool pictureFails = false;
    bool pictureDies = false; ///< soon after its start
    std::vector<QString> events;
    std::atomic<int> running = 0;
};

/// Sends samples from a thread of its own, numbered by their time.
class FakeSource final : public CaptureSource {
public:
    FakeSource(Scene &scene, bool isPicture) : m_scene(scene), m_isPicture(isPicture) {}
    ~FakeSource() override { end(); }

    QFuture<void> start(SampleHandler onSample, EndHandler onEnd) override
    {
        m_scene.events.emplace_back(m_isPicture ? "picture" : "sound");
        ++m_scene.running;
        QPromise<void> promise;
        promise.start();
        auto started = promise.future();
        m_thread = std::jthread([this, onSample = std::move(onSample), onEnd = std::move(onEnd),
                                 promise = std::move(promise)](const std::stop_token &stop) mutable {
            run(stop, onSample, onEnd, promise);
        });
        return started;
    }
    QFuture<void> stop() override
    {
        end();
        return QtFuture::makeReadyFuture();
    }

private:
    void run(const std::stop_token &stop, const SampleHandler &onSample, const EndHandler &onEnd,
             QPromise<void> &promise) const
    {
        if (m_isPicture && m_scene.pictureFails) {
            promise.setException(std::make_exception_ptr(PlatformError("No picture")));
            promise.finish();
            return;
        }
        std::this_thread::sleep_for(m_isPicture ? 0ms : m_scene.soundStartTakes);
        promise.finish();
        for (int number = 0; !stop.stop_requested(); ++number) {
            onSample(MediaSample(std::make_shared<const VideoFrame>(),
                                 {MediaTime::fromNanoseconds(number), {}, {}}));
            std::this_thread::sleep_for(1ms);
            if (m_isPicture && m_scene.pictureDies && number == 5) {
                onEnd(std::make_exception_ptr(PlatformError("Display unplugged")));
                return;
            }
        }
    }
    void end()
    {
        if (m_thread.joinable()) {
            m_thread = std::jthread();
            --m_scene.running;
        }
    }

    Scene &m_scene;
    bool m_isPicture;
    std::jthread m_thread;
};

class FakeSources final : public PictureSourceFactory, public SoundSourceFactory {
public:
    explicit FakeSources(Scene &scene) : m_scene(scene) {}
    std::unique_ptr<CaptureSource> makePictureSource(const ContentFilter & /*filter*/,
                                                     const CaptureConfiguration & /*configuration*/) override
    {
        return std::make_unique<FakeSource>(m_scene, true);
    }
    std::unique_ptr<CaptureSource> makeSystemSoundSource(const AudioFormat & /*format*/) override
    {
        return std::make_unique<FakeSource>(m_scene, false);
    }
    std::unique_ptr<CaptureSource> makeMicrophoneSource(const std::optional<QString> & /*device*/) override
    {
        return std::make_unique<FakeSource>(m_scene, false);
    }

private:
    Scene &m_scene;
};

class ComposedCaptureStreamTest : public ::testing::Test {
protected:
    std::unique_ptr<CaptureStream> makeStream(bool computer = true, bool microphone = true)
    {
        CaptureConfiguration configuration;
        configuration.capturesAudio = computer;
        configuration.capturesMicrophone = microphone;
        return m_factory.makeStream({}, configuration, [this](const std::exception_ptr &) { ++ends; });
    }
    /// With all three outputs, whose samples are counted.
    std::unique_ptr<CaptureStream> makeFullStream()
    {
        auto stream = makeStream();
        for (const auto type : {CaptureOutput::Screen, CaptureOutput::Audio, CaptureOutput::Microphone}) {
            auto &expected = counts.at(static_cast<std::size_t>(type));
            stream->addOutput(type, queue,
                              [&expected, type](const MediaSample &sample, CaptureOutput output) {
                                  EXPECT_EQ(output, type);
                                  EXPECT_EQ(sample.presentationTime().nanoseconds(), expected++);
                              });
        }
        return stream;
    }
    Scene scene;
    std::atomic<int> ends = 0;
    std::array<std::atomic<int>, 3> counts{};
    std::shared_ptr<SerialQueue> queue = ThreadSerialQueueFactory().makeSerialQueue("samples");

private:
    FakeSources m_sources{scene};
    ComposedCaptureStreamFactory m_factory{m_sources, m_sources};
};

TEST_F(ComposedCaptureStreamTest, DeliversEverySampleInOrderUntilItIsStopped)
{
    scene.soundStartTakes = 100ms;
    const auto stream = makeFullStream();
    const auto started = stream->startCapture();
    EXPECT_TRUE(eventually([&] { return counts[0] > 0; }));
    EXPECT_EQ(counts[1], 0) << "sound that starts slowly must not hold the picture back";
    EXPECT_TRUE(eventually([&] { return started.isFinished(); }));
    EXPECT_TRUE(eventually([&] { return counts[0] > 5 && counts[1] > 5 && counts[2] > 5; }));
    EXPECT_EQ(scene.events, (std::vector<QString>{"sound", "sound", "picture"}));
    EXPECT_THROW(stream->addOutput(CaptureOutput::Screen, queue, {}), PlatformError);

    const auto stopped = stream->stopCapture();
    EXPECT_TRUE(eventually([&] { return stopped.isFinished(); }));
    std::atomic<int> delivered = 0; // once all that was handed to the queue by now has been
    queue->async([&] { delivered = counts[0].load(); });
    EXPECT_TRUE(eventually([&] { return delivered > 0; }));
    EXPECT_FALSE(eventually([&] { return counts[0] != delivered; }, 20ms)) << "sample after the stop";
    EXPECT_TRUE(stream->stopCapture().isFinished());
    EXPECT_EQ(ends, 0);
}

TEST_F(ComposedCaptureStreamTest, FailsWithThePictureAndStopsTheSound)
{
    scene.pictureFails = true;
    const auto stream = makeFullStream();
    auto started = stream->startCapture();
    EXPECT_TRUE(eventually([&] { return started.isFinished(); }));
    EXPECT_THROW(started.waitForFinished(), PlatformError);
    EXPECT_EQ(scene.running, 0);
    EXPECT_TRUE(stream->stopCapture().isFinished());
}

TEST_F(ComposedCaptureStreamTest, TellsOnceWhenThePictureDies)
{
    scene.pictureDies = true;
    const auto stream = makeFullStream();
    const auto started = stream->startCapture();
    EXPECT_TRUE(eventually([&] { return started.isFinished() && ends > 0 && counts[1] > 20; }));
    const auto stopped = stream->stopCapture();
    EXPECT_TRUE(eventually([&] { return stopped.isFinished(); }));
    EXPECT_EQ(ends, 1);
}

TEST_F(ComposedCaptureStreamTest, OpensOnlyTheSoundThatIsConfiguredAndWanted)
{
    EXPECT_THROW(makeStream(false, true)->addOutput(CaptureOutput::Audio, queue, {}), PlatformError);
    EXPECT_THROW(makeStream(true, false)->addOutput(CaptureOutput::Microphone, queue, {}), PlatformError);
    const auto stream = makeStream();
    EXPECT_TRUE(stream->stopCapture().isFinished()) << "never started";
    const auto started = stream->startCapture();
    EXPECT_TRUE(eventually([&] { return started.isFinished(); }));
    EXPECT_EQ(scene.events, std::vector<QString>{"picture"});
}

TEST_F(ComposedCaptureStreamTest, DestroyingItStopsEverythingEvenDuringTheStart)
{
    scene.soundStartTakes = 50ms;
    auto stream = makeFullStream();
    const auto started = stream->startCapture();
    stream.reset();
    EXPECT_EQ(scene.running, 0);
    EXPECT_TRUE(eventually([&] { return started.isFinished(); }));
}

} // namespace
} // namespace zivra::desktop
