#include "desktop/stream/ComposedCaptureStream.h"

#include "platform/PlatformError.h"
#include "support/Eventually.h"

#include <QPromise>

#include <gtest/gtest.h>

namespace zivra::desktop {
namespace {

/// What the test makes a source do, and what became of it.
struct Script {
    QPromise<void> starting;
    CaptureSource::SampleHandler onSample;
    CaptureSource::EndHandler onEnd;
    bool isRunning = false;
};

class FakeSource final : public CaptureSource {
public:
    explicit FakeSource(Script &script) : m_script(script) {}
    ~FakeSource() override { m_script.isRunning = false; }

    QFuture<void> start(SampleHandler onSample, EndHandler onEnd) override
    {
        m_script.isRunning = true;
        m_script.onSample = std::move(onSample);
        m_script.onEnd = std::move(onEnd);
        m_script.starting.start();
        return m_script.starting.future();
    }
    QFuture<void> stop() override
    {
        m_script.isRunning = false;
        return QtFuture::makeReadyFuture();
    }

private:
    Script &m_script;
};

struct DirectQueue final : SerialQueue {
    void async(std::function<void()> work) override { work(); }
};

struct ComposedCaptureStreamTest : ::testing::Test, PictureSourceFactory, SoundSourceFactory {
    ComposedCaptureStreamTest()
    {
        CaptureConfiguration how;
        how.capturesAudio = true;
        stream = factory.makeStream({}, how, [this](const std::exception_ptr &) { ++ends; });
    }

    using Source = std::unique_ptr<CaptureSource>;
    Source makePictureSource(const ContentFilter & /*filter*/, const CaptureConfiguration & /*how*/) override
    {
        return std::make_unique<FakeSource>(picture);
    }
    Source makeSystemSoundSource(const AudioFormat & /*format*/) override
    {
        return std::make_unique<FakeSource>(sound);
    }
    Source makeMicrophoneSource(const std::optional<QString> & /*device*/) override { return nullptr; }
    void addOutput(CaptureOutput type)
    {
        stream->addOutput(type, std::make_shared<DirectQueue>(),
                          [this](const MediaSample &, CaptureOutput output) { delivered.push_back(output); });
    }

    Script picture;
    Script sound;
    std::vector<CaptureOutput> delivered;
    int ends = 0;
    ComposedCaptureStreamFactory factory{*this, *this};
    std::unique_ptr<CaptureStream> stream;
};

TEST_F(ComposedCaptureStreamTest, HoldsNoPictureBackForSoundAndOutlivesItsSources)
{
    addOutput(CaptureOutput::Screen);
    addOutput(CaptureOutput::Audio);
    const auto started = stream->startCapture();
    picture.starting.finish();
    picture.onSample({});
    EXPECT_FALSE(started.isFinished());
    sound.starting.finish();
    EXPECT_TRUE(eventually([&] { return started.isFinished(); }));
    sound.onEnd({});
    EXPECT_EQ(ends, 0) << "sound is no reason to end";
    picture.onEnd({});
    EXPECT_EQ(ends, 1);
    sound.onSample({});
    EXPECT_EQ(delivered, (std::vector{CaptureOutput::Screen, CaptureOutput::Audio}));
    const auto stopped = stream->stopCapture();
    EXPECT_TRUE(eventually([&] { return stopped.isFinished(); }));
    EXPECT_FALSE(picture.isRunning || sound.isRunning);
}

TEST_F(ComposedCaptureStreamTest, FailsWithThePictureAndStopsTheSound)
{
    addOutput(CaptureOutput::Audio);
    auto started = stream->startCapture();
    sound.starting.finish();
    picture.starting.setException(std::make_exception_ptr(PlatformError("No picture")));
    picture.starting.finish();
    EXPECT_TRUE(eventually([&] { return started.isFinished(); }));
    EXPECT_THROW(started.waitForFinished(), PlatformError);
    EXPECT_FALSE(sound.isRunning);
}

TEST_F(ComposedCaptureStreamTest, DestroyingItStopsWhatIsWantedEvenDuringTheStart)
{
    addOutput(CaptureOutput::Screen);
    const auto started = stream->startCapture();
    EXPECT_TRUE(picture.isRunning);
    EXPECT_FALSE(sound.onSample) << "nobody wants it";
    stream.reset();
    EXPECT_FALSE(picture.isRunning);
    picture.starting.finish();
    EXPECT_TRUE(eventually([&] { return started.isFinished(); }));
}

} // namespace
} // namespace zivra::desktop
