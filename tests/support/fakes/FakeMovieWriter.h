#pragma once

#include "platform/MovieWriter.h"
#include "support/fakes/ScriptedResult.h"

#include <QFile>

#include <limits>
#include <stdexcept>
#include <utility>

namespace zivra::test {

struct WriterRecord;

/// One input, as the test sees it.
class FakeInput final : public MovieWriterInput {
public:
    explicit FakeInput(WriterRecord &writer) : m_writer(writer) {}

    std::optional<VideoSettings> video;
    std::optional<AudioSettings> audio;
    bool realTime = false;
    bool finished = false;
    int readyFor = std::numeric_limits<int>::max(); ///< samples until it is no longer ready
    std::vector<MediaSample> appended;

    void setExpectsMediaDataInRealTime(bool expected) override { realTime = expected; }
    [[nodiscard]] bool isReadyForMoreMediaData() const override { return readyFor > 0; }
    bool append(const MediaSample &sample) override;
    void markAsFinished() override { finished = true; }
    void requestMediaDataWhenReady(std::shared_ptr<SerialQueue>, std::function<void()>) override {}

private:
    WriterRecord &m_writer;
};

/// All that happened to one writer. Stays when the writer is gone.
struct WriterRecord {
    QUrl url;
    MovieFileType type = MovieFileType::Mpeg4;
    std::vector<std::unique_ptr<FakeInput>> inputs;
    MovieWriter::Status status = MovieWriter::Status::Unknown;
    std::exception_ptr error;
    MediaTime sessionStart;
    std::function<void(std::exception_ptr)> onInterruption;
    bool isAlive = true;
    bool startFails = false; ///< with whatever `error` is
    bool finishFails = false;
    ScriptedResult<void> finishing;

    void fail(std::exception_ptr reason)
    {
        status = MovieWriter::Status::Failed;
        error = std::move(reason);
    }
};

inline bool FakeInput::append(const MediaSample &sample)
{
    if (!m_writer.isAlive) {
        throw std::logic_error("appended to a writer that is gone");
    }
    if (m_writer.status != MovieWriter::Status::Writing || finished) {
        return false;
    }
    appended.push_back(sample);
    --readyFor;
    return true;
}

/// Leaves an empty file where there is a folder for it.
class FakeMovieWriter final : public MovieWriter {
public:
    explicit FakeMovieWriter(std::shared_ptr<WriterRecord> record) : m_record(std::move(record)) {}
    ~FakeMovieWriter() override { m_record->isAlive = false; }
    FakeMovieWriter(const FakeMovieWriter &) = delete;
    FakeMovieWriter &operator=(const FakeMovieWriter &) = delete;

    MovieWriterInput &addVideoInput(const VideoSettings &settings) override
    {
        FakeInput &input = addInput();
        input.video = settings;
        return input;
    }
    MovieWriterInput &addAudioInput(const AudioSettings &settings) override
    {
        FakeInput &input = addInput();
        input.audio = settings;
        return input;
    }
    MovieWriterInput &addPassthroughInput(std::shared_ptr<const TrackFormat>,
                                          const std::optional<TrackTransform> &) override
    {
        return addInput();
    }
    void setInterruptionHandler(std::function<void(std::exception_ptr)> handler) override
    {
        m_record->onInterruption = std::move(handler);
    }
    bool startWriting() override
    {
        if (m_record->startFails) {
            m_record->status = Status::Failed;
            return false;
        }
        m_record->status = Status::Writing;
        QFile file(m_record->url.toLocalFile());
        return file.open(QIODevice::WriteOnly | QIODevice::NewOnly) || !file.exists();
    }
    void startSession(MediaTime sourceTime) override { m_record->sessionStart = sourceTime; }
    [[nodiscard]] Status status() const override { return m_record->status; }
    [[nodiscard]] std::exception_ptr error() const override { return m_record->error; }
    [[nodiscard]] QUrl outputURL() const override { return m_record->url; }
    QFuture<void> finishWriting() override
    {
        if (m_record->status == Status::Writing) {
            m_record->status = m_record->finishFails ? Status::Failed : Status::Completed;
        }
        return m_record->finishing.answer();
    }

private:
    FakeInput &addInput() { return *m_record->inputs.emplace_back(std::make_unique<FakeInput>(*m_record)); }

    std::shared_ptr<WriterRecord> m_record;
};

} // namespace zivra::test
