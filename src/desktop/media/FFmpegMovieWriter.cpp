#include "desktop/media/FFmpegMovieWriter.h"

#include "desktop/media/AudioEncoder.h"
#include "desktop/media/PacketCopier.h"
#include "desktop/media/PictureEncoder.h"
#include "platform/PlatformError.h"

namespace zivra::desktop {

class FFmpegMovieWriter::Input final : public MovieWriterInput {
public:
    Input(FFmpegMovieWriter &writer, std::size_t lane) : m_writer(writer), m_lane(lane) {}

    void setExpectsMediaDataInRealTime(bool realTime) override
    {
        m_writer.m_intake.setRealTime(m_lane, realTime);
    }

    [[nodiscard]] bool isReadyForMoreMediaData() const override { return m_writer.m_intake.isReady(m_lane); }

    bool append(const MediaSample &sample) override
    {
        return m_writer.m_sessionStarted && sample.isValid() && m_writer.m_tracks[m_lane]->accepts(sample) &&
               m_writer.m_intake.append(m_lane, sample);
    }

    void markAsFinished() override { m_writer.m_intake.finishLane(m_lane); }

    void requestMediaDataWhenReady(std::shared_ptr<SerialQueue> queue, std::function<void()> work) override
    {
        m_writer.m_intake.notifyWhenReady(m_lane, std::move(queue), std::move(work));
    }

private:
    FFmpegMovieWriter &m_writer;
    const std::size_t m_lane;
};

FFmpegMovieWriter::FFmpegMovieWriter(const QUrl &url, MovieFileType type)
    : m_url(url),
      m_type(type),
      m_finishedFuture(m_finished.future())
{
    m_finished.start();
}

FFmpegMovieWriter::~FFmpegMovieWriter()
{
    if (!m_finishing) {
        m_intake.stop();
    }
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

MovieWriterInput &FFmpegMovieWriter::addVideoInput(const VideoSettings &settings)
{
    return addInput(MediaType::Video, makePictureEncoder(settings));
}

MovieWriterInput &FFmpegMovieWriter::addAudioInput(const AudioSettings &settings)
{
    return addInput(MediaType::Audio, std::make_unique<AudioEncoder>(settings));
}

MovieWriterInput &FFmpegMovieWriter::addPassthroughInput(std::shared_ptr<const TrackFormat> format,
                                                         const std::optional<TrackTransform> &transform)
{
    auto encoded = std::dynamic_pointer_cast<const EncodedTrackFormat>(format);
    if (!encoded) {
        throw PlatformError(QStringLiteral("The track’s format is unknown."));
    }
    const auto type =
        encoded->parameters().codec_type == AVMEDIA_TYPE_VIDEO ? MediaType::Video : MediaType::Audio;
    return addInput(type, std::make_unique<PacketCopier>(std::move(encoded), transform));
}

MovieWriterInput &FFmpegMovieWriter::addInput(MediaType type, std::unique_ptr<TrackEncoder> encoder)
{
    m_tracks.push_back(std::move(encoder));
    return *m_inputs.emplace_back(std::make_unique<Input>(*this, m_intake.addLane(type)));
}

void FFmpegMovieWriter::setInterruptionHandler(std::function<void(std::exception_ptr)> handler)
{
    m_interruptionHandler = std::move(handler);
}

bool FFmpegMovieWriter::startWriting()
{
    if (status() != Status::Unknown) {
        return false;
    }
    try {
        m_worker = std::make_unique<WriterWorker>(
            m_url.toLocalFile(), m_type, m_tracks, m_intake,
            WriterWorker::Events{.interrupted = m_interruptionHandler,
                                 .failed = [this](std::exception_ptr error) {
                                     setOutcome(Status::Failed, std::move(error));
                                 }});
    } catch (...) {
        setOutcome(Status::Failed, std::current_exception());
        return false;
    }
    setOutcome(Status::Writing, nullptr);
    return true;
}

void FFmpegMovieWriter::startSession(MediaTime sourceTime)
{
    if (m_sessionStarted || !m_worker || !sourceTime.isValid()) {
        return;
    }
    m_sessionStarted = true;
    m_worker->setSessionStart(sourceTime);
    m_thread = std::jthread([this] { runWorker(); });
    m_intake.open();
}

void FFmpegMovieWriter::runWorker()
{
    const bool completed = m_worker->run();
    if (m_finishing) {
        if (completed) {
            setOutcome(Status::Completed, nullptr);
        }
        m_finished.finish();
    }
}

MovieWriter::Status FFmpegMovieWriter::status() const
{
    const std::lock_guard lock(m_outcomeMutex);
    return m_status;
}

std::exception_ptr FFmpegMovieWriter::error() const
{
    const std::lock_guard lock(m_outcomeMutex);
    return m_error;
}

void FFmpegMovieWriter::setOutcome(Status status, std::exception_ptr error)
{
    const std::lock_guard lock(m_outcomeMutex);
    m_status = status;
    m_error = std::move(error);
}

QFuture<void> FFmpegMovieWriter::finishWriting()
{
    if (!m_finishing) {
        m_finishing = true;
        m_intake.finishAllLanes();
        if (!m_thread.joinable()) {
            // No session was started: there is nothing to wait for, and nothing to keep.
            if (status() == Status::Writing) {
                setOutcome(Status::Failed,
                           std::make_exception_ptr(PlatformError(QStringLiteral("Nothing was recorded."))));
            }
            m_finished.finish();
        }
    }
    return m_finishedFuture;
}

} // namespace zivra::desktop
