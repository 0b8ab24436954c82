#include "capture/CameraSession.h"

#include "platform/PlatformError.h"

#include <utility>

namespace zivra {

namespace {

/// A movie's picture is never older than this: durations are true, and the file is flushed with it.
constexpr auto kLongestPicture = MediaTime::fromMilliseconds(1000);
/// A camera that runs has a picture by then.
constexpr auto kStaleAfter = MediaTime::fromMilliseconds(100);

QSize presetSize(VideoQuality quality)
{
    switch (quality) {
    case VideoQuality::Low:
        return {640, 480};
    case VideoQuality::Medium:
        return {1280, 720};
    case VideoQuality::High:
        break;
    }
    return {1920, 1080};
}

} // namespace

CameraSession::CameraSession(Services services, SerialQueue &queue, std::shared_ptr<LatestPicture> preview)
    : m_with(services),
      m_queue(queue),
      m_preview(std::move(preview))
{
}

void CameraSession::start(const std::optional<CaptureDevice> &device, VideoQuality quality)
{
    if (device && m_cameraID != device->uniqueID) {
        closeCamera();
        m_cameraID = device->uniqueID;
    }
    if (const QSize size = presetSize(quality); size != m_size) {
        closeCamera();
        m_size = size;
    }
    m_isRunning = true;
    openCamera();
}

void CameraSession::stop()
{
    if (m_isRunning && !m_movie) {
        m_isRunning = false;
        closeCamera();
        m_preview->show(nullptr);
    }
}

void CameraSession::openCamera()
{
    if (!m_cameraID || m_camera) {
        return;
    }
    try {
        m_camera = m_with.cameras.makeCameraSource(*m_cameraID, m_size);
    } catch (const PlatformError &) {
        m_cameraID.reset();
        return;
    }
    const auto onQueue = [this, self = weak_from_this(), opening = ++m_opening](auto work) {
        m_queue.async([self, opening, work = std::move(work)] {
            if (const auto session = self.lock()) {
                work(*session, opening);
            }
        });
    };
    const auto end = [onQueue] {
        onQueue([](CameraSession &session, std::uint64_t opening) { session.cameraEnded(opening); });
    };
    m_camera
        ->start(
            [onQueue](const MediaSample &picture) {
                onQueue([picture](CameraSession &session, std::uint64_t opening) {
                    session.receivePicture(opening, picture);
                });
            },
            [end](const std::exception_ptr & /*reason*/) { end(); })
        .onFailed(end);
}

void CameraSession::closeCamera()
{
    m_camera.reset();
    ++m_opening;
}

void CameraSession::cameraEnded(std::uint64_t opening)
{
    if (opening == m_opening) {
        closeCamera();
        m_cameraID.reset();
    }
}

void CameraSession::receivePicture(std::uint64_t opening, const MediaSample &picture)
{
    if (opening != m_opening) {
        return;
    }
    m_preview->show(picture.videoFrame());
    if (m_movie) {
        m_lastPicture = picture;
        m_movie->handle(picture, CaptureOutput::Screen);
    }
}

void CameraSession::startMovie(const std::optional<CaptureDevice> &microphone, const QUrl &url)
{
    if (m_movie) {
        return;
    }
    m_lastPicture = {};
    m_movie = std::make_unique<LiveMovie>(
        LiveMovieOptions{.url = url, .pictures = std::nullopt, .microphone = microphone.has_value()},
        m_with.movies);
    // A full disk ends nothing by itself: what was written until then is the movie.
    m_movie->setErrorHandler([](const std::exception_ptr & /*reason*/) {});
    if (microphone) {
        openMicrophone(*microphone);
    }
    m_isRunning = true;
    openCamera();
}

void CameraSession::openMicrophone(const CaptureDevice &microphone)
{
    m_microphone = m_with.sounds.makeMicrophoneSource(microphone.uniqueID);
    const auto onSound = [this, self = weak_from_this()](const MediaSample &sound) {
        m_queue.async([self, sound] {
            const auto session = self.lock();
            if (session && session->m_movie) {
                session->m_movie->handle(sound, CaptureOutput::Microphone);
            }
        });
    };
    static_cast<void>(m_microphone->start(onSound, [](const std::exception_ptr & /*reason*/) {}));
}

void CameraSession::pauseMovie()
{
    if (isRecording() && !m_movie->isPaused()) {
        repeatPictureIfOlderThan(kStaleAfter);
        m_movie->pause();
    }
}

void CameraSession::resumeMovie()
{
    if (isRecording() && m_movie->isPaused()) {
        m_movie->resume();
        repeatPictureIfOlderThan(kStaleAfter);
    }
}

void CameraSession::holdPicture()
{
    if (isRecording() && !m_movie->isPaused()) {
        repeatPictureIfOlderThan(kLongestPicture);
    }
}

void CameraSession::repeatPictureIfOlderThan(MediaTime age)
{
    const MediaTime now = m_with.clock.now();
    if (m_lastPicture.isValid() && now - m_lastPicture.presentationTime() >= age) {
        m_lastPicture = m_lastPicture.withTiming({now, MediaTime::invalid(), MediaTime::invalid()});
        m_movie->handle(m_lastPicture, CaptureOutput::Screen);
    }
}

std::optional<QFuture<void>> CameraSession::stopMovie()
{
    if (!isRecording()) {
        return std::nullopt;
    }
    if (!m_movie->isPaused()) {
        repeatPictureIfOlderThan(kStaleAfter);
    }
    m_isClosing = true;
    auto closing = m_movie->finish();
    if (!closing) {
        static_cast<void>(endMovie());
    }
    return closing;
}

std::optional<QUrl> CameraSession::endMovie()
{
    std::optional<QUrl> file = m_movie->finishedFile();
    m_microphone.reset();
    m_movie.reset();
    m_lastPicture = {};
    m_isClosing = false;
    return file;
}

} // namespace zivra
