#pragma once

#include "capture/ScreenRecorder.h"
#include "support/fakes/Await.h"
#include "support/fakes/FakeCaptureStream.h"
#include "support/fakes/FakeMovieServices.h"

#include <gtest/gtest.h>

namespace zivra::test {

using Times = std::vector<std::int64_t>;

/// A recorder among fakes. All times are in milliseconds; what is delivered waits on the queue.
struct RecorderTest : testing::Test {
    RecorderTest()
    {
        options.outputSize = QSizeF(1920, 1080);
        options.captureSystemAudio = true;
        options.microphoneID = "mic";
        options.outputURL = QUrl::fromLocalFile("/nowhere/take.mp4");
    }

    QCoro::Task<> starting()
    {
        recorder = std::make_unique<ScreenRecorder>(options, streams, movies, queues);
        recorder->setErrorHandler([this](const std::exception_ptr &error) { errors << errorText(error); });
        return recorder->start();
    }
    void start() { await(starting(), &queues); }
    void frame(std::int64_t time, std::optional<FrameStatus> status = FrameStatus::Complete)
    {
        streams.deliver(CaptureOutput::Screen, {std::make_shared<const VideoFrame>(), at(time), status});
    }
    void sound(std::int64_t time, CaptureOutput output = CaptureOutput::Audio, AudioFormat format = {})
    {
        streams.deliver(output, {std::make_shared<const AudioBlock>(AudioBlock{format, {0, 0}}), at(time)});
    }
    /// A take that has begun its file at that time.
    void startWithFrame(std::int64_t time = 1)
    {
        start();
        frame(time);
        queues.run();
    }
    std::optional<QUrl> stop() { return await(recorder->stop(), &queues); }

    WriterRecord &writer() { return *movies.writers.back(); }
    FakeInput &video() { return *writer().inputs.at(0); }
    FakeInput &systemSound() { return *writer().inputs.at(1); }
    FakeInput &microphone() { return *writer().inputs.at(2); }
    /// Where its samples lie in the file.
    static Times times(const FakeInput &input)
    {
        Times all;
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
    const std::exception_ptr trouble = std::make_exception_ptr(PlatformError("trouble"));
};

} // namespace zivra::test
