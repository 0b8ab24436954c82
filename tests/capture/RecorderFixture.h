#pragma once

#include "capture/ScreenRecorder.h"
#include "support/fakes/Await.h"
#include "support/fakes/FakeCaptureStream.h"
#include "support/fakes/FakeMovieServices.h"

#include <gtest/gtest.h>

namespace zivra::test {

/// A recorder among fakes. All times are in milliseconds.
struct RecorderTest : testing::Test {
    RecorderTest()
    {
        options.outputSize = QSizeF(1920, 1080);
        options.captureSystemAudio = true;
        options.microphoneID = "mic";
        options.outputURL = QUrl::fromLocalFile("/nowhere/take.mp4");
    }

    void make()
    {
        recorder = std::make_unique<ScreenRecorder>(options, streams, movies, queues);
        recorder->setErrorHandler([this](const std::exception_ptr &error) { errors << errorText(error); });
    }
    void start()
    {
        make();
        await(recorder->start(), &queues);
    }
    void deliver(CaptureOutput output, const MediaSample &sample)
    {
        streams.deliver(output, sample);
        queues.run();
    }
    void frame(std::int64_t time, FrameStatus status = FrameStatus::Complete)
    {
        deliver(CaptureOutput::Screen, {std::make_shared<const VideoFrame>(), at(time), status});
    }
    void sound(std::int64_t time, CaptureOutput output = CaptureOutput::Audio, AudioFormat format = {})
    {
        deliver(output, {std::make_shared<const AudioBlock>(AudioBlock{format, {0, 0}}), at(time)});
    }
    void pause()
    {
        recorder->pause();
        queues.run();
    }
    void resume()
    {
        recorder->resume();
        queues.run();
    }
    std::optional<QUrl> stop() { return await(recorder->stop(), &queues); }

    WriterRecord &writer() { return *movies.writers.back(); }
    FakeInput &video() { return *writer().inputs.at(0); }
    FakeInput &systemSound() { return *writer().inputs.at(1); }
    FakeInput &microphone() { return *writer().inputs.at(2); }
    /// Where its samples lie in the file.
    static std::vector<std::int64_t> times(const FakeInput &input)
    {
        std::vector<std::int64_t> all;
        for (const MediaSample &sample : input.appended) {
            all.push_back(sample.presentationTime().nanoseconds() / 1'000'000);
        }
        return all;
    }

    static SampleTiming at(std::int64_t time)
    {
        return {MediaTime::fromMilliseconds(time), MediaTime::invalid(), MediaTime::fromMilliseconds(10)};
    }

    ScreenRecorderOptions options;
    FakeCaptureStreams streams;
    FakeMovieServices movies;
    ManualQueueFactory queues;
    std::unique_ptr<ScreenRecorder> recorder;
    QStringList errors;
};

using Times = std::vector<std::int64_t>;

} // namespace zivra::test
