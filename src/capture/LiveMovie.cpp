#include "capture/LiveMovie.h"

#include "capture/MovieFiles.h"
#include "capture/ZivraError.h"

#include <algorithm>
#include <utility>

namespace zivra {

namespace {

bool isCompleteFrame(const MediaSample &sample)
{
    return sample.frameStatus() == FrameStatus::Complete;
}

/// What AAC is made of sound in that format: one or two channels, at 44.1 kHz where that is the source's
/// rate, else at 48.
AudioSettings audioSettings(const std::optional<AudioFormat> &source, int defaultChannels)
{
    constexpr double kCompactDiscRate = 44100;
    AudioSettings settings;
    settings.sampleRate = source && source->sampleRate == kCompactDiscRate ? kCompactDiscRate : 48000;
    settings.channels = source ? std::clamp(source->channels, 1, 2) : defaultChannels;
    settings.bitRate = settings.channels == 1 ? 96000 : 160000;
    return settings;
}

MediaSample retimed(const MediaSample &sample, MediaTime offset)
{
    SampleTiming timing = sample.timing();
    timing.presentation = timing.presentation - offset;
    timing.decode = timing.decode - offset;
    return sample.withTiming(timing);
}

} // namespace

LiveMovie::LiveMovie(LiveMovieOptions options, MovieServices &movies)
    : m_options(std::move(options)),
      m_movies(movies)
{
}

void LiveMovie::handle(const MediaSample &sample, CaptureOutput output)
{
    if (m_stopped || !sample.isValid()) {
        return;
    }
    switch (output) {
    case CaptureOutput::Screen:
        handleFrame(sample);
        break;
    case CaptureOutput::Audio:
        handleAudio(sample, m_systemInput, m_systemFormat);
        break;
    case CaptureOutput::Microphone:
        handleAudio(sample, m_micInput, m_micFormat);
        break;
    }
}

void LiveMovie::handleAudio(const MediaSample &sample, MovieWriterInput *input,
                            std::optional<AudioFormat> &format)
{
    if (m_writer) {
        append(sample, input);
    } else {
        format = sample.audioFormat();
    }
}

void LiveMovie::handleFrame(const MediaSample &frame)
{
    if (!isCompleteFrame(frame)) {
        return;
    }
    if (!m_writer) {
        try {
            setUpWriter(frame);
        } catch (...) {
            m_stopped = true;
            if (m_onError) {
                m_onError(std::current_exception());
            }
            return;
        }
    }
    append(frame, m_videoInput);
}

void LiveMovie::setUpWriter(const MediaSample &firstFrame)
{
    std::unique_ptr<MovieWriter> writer = m_movies.makeWriter(m_options.url, movieFileType(m_options.url));
    const auto inRealTime = [](MovieWriterInput &input) {
        input.setExpectsMediaDataInRealTime(true);
        return &input;
    };
    MovieWriterInput *video = inRealTime(writer->addVideoInput(videoSettings(firstFrame)));
    MovieWriterInput *system = nullptr;
    if (m_options.systemSound) {
        system = inRealTime(writer->addAudioInput(audioSettings(m_systemFormat, 2)));
    }
    MovieWriterInput *microphone = nullptr;
    if (m_options.microphone) {
        microphone = inRealTime(writer->addAudioInput(audioSettings(m_micFormat, 1)));
    }
    writer->setInterruptionHandler(m_onError);
    if (!writer->startWriting()) {
        const std::exception_ptr error = writer->error();
        std::rethrow_exception(error ? error
                                     : std::make_exception_ptr(ZivraError(ZivraError::recordingFailed)));
    }
    writer->startSession(firstFrame.presentationTime());
    m_writer = std::move(writer);
    m_videoInput = video;
    m_systemInput = system;
    m_micInput = microphone;
}

VideoSettings LiveMovie::videoSettings(const MediaSample &firstFrame) const
{
    // H.264 ends here in the decoders of ordinary hardware.
    constexpr int kWidestH264 = 4096;
    constexpr int kTallestH264 = 2304;
    constexpr double kBitsPerPixel = 0.15;
    constexpr std::int64_t kLeastBitRate = 2'000'000;

    VideoSettings settings;
    const auto picture = firstFrame.videoFrame();
    const QSize size = m_options.pictures.value_or(QSize(picture->width, picture->height));
    settings.width = size.width();
    settings.height = size.height();
    settings.codec =
        settings.width > kWidestH264 || settings.height > kTallestH264 ? VideoCodec::Hevc : VideoCodec::H264;
    settings.expectedSourceFrameRate = 30;
    settings.maxKeyFrameInterval = 60;
    const auto pixels = static_cast<double>(std::int64_t{settings.width} * settings.height);
    const double bitRate = pixels * settings.expectedSourceFrameRate * kBitsPerPixel;
    settings.averageBitRate = std::max(kLeastBitRate, static_cast<std::int64_t>(bitRate));
    return settings;
}

void LiveMovie::append(const MediaSample &sample, MovieWriterInput *input)
{
    if (input == nullptr || !isWriting() || m_timeline.isPaused()) {
        return;
    }
    m_timeline.pass(sample.presentationTime());
    if (!input->isReadyForMoreMediaData()) {
        return;
    }
    const MediaTime offset = m_timeline.offset();
    const MediaSample placed = offset == MediaTime::zero() ? sample : retimed(sample, offset);
    if (input == m_videoInput) {
        const MediaTime time = placed.presentationTime();
        if (m_lastVideoTime.isValid() && time <= m_lastVideoTime) {
            return;
        }
        m_lastVideoTime = time;
    }
    input->append(placed);
}

bool LiveMovie::isWriting() const
{
    return m_writer && m_writer->status() == MovieWriter::Status::Writing;
}

std::optional<QFuture<void>> LiveMovie::finish()
{
    m_stopped = true;
    if (!isWriting()) {
        return std::nullopt;
    }
    for (MovieWriterInput *input : {m_videoInput, m_systemInput, m_micInput}) {
        if (input != nullptr) {
            input->markAsFinished();
        }
    }
    return m_writer->finishWriting();
}

std::optional<QUrl> LiveMovie::finishedFile() const
{
    const bool isUsable = m_writer && m_writer->status() == MovieWriter::Status::Completed;
    return isUsable ? std::optional(m_writer->outputURL()) : std::nullopt;
}

} // namespace zivra
