#include "capture/SessionCameraManager.h"

#include "capture/QueueResult.h"

#include <QCoroFuture>

#include <chrono>
#include <utility>

namespace zivra {

namespace {

constexpr std::chrono::milliseconds kHoldInterval{500};

} // namespace

SessionCameraManager::SessionCameraManager(CameraSession::Services services, SerialQueueFactory &queues)
    : m_queue(queues.makeSerialQueue("zivra.camera")),
      m_preview(std::make_shared<LatestPicture>()),
      m_session(std::make_shared<CameraSession>(services, *m_queue, m_preview))
{
    m_holdTimer.setInterval(kHoldInterval);
    m_holdTimer.callOnTimeout([this] { m_queue->async([session = m_session] { session->holdPicture(); }); });
}

SessionCameraManager::~SessionCameraManager()
{
    m_preview->setHandler({});
    // On its queue, since a picture may be on its way into it. The queue is waited for.
    m_queue->async([session = std::move(m_session)] {});
}

void SessionCameraManager::start(const std::optional<CaptureDevice> &device, VideoQuality quality)
{
    m_queue->async([session = m_session, device, quality] { session->start(device, quality); });
}

void SessionCameraManager::stop()
{
    m_queue->async([session = m_session] { session->stop(); });
}

void SessionCameraManager::startMovie(const std::optional<CaptureDevice> &microphone, const QUrl &url)
{
    m_queue->async([session = m_session, microphone, url] { session->startMovie(microphone, url); });
    m_holdTimer.start();
}

void SessionCameraManager::pauseMovie()
{
    m_queue->async([session = m_session] { session->pauseMovie(); });
}

void SessionCameraManager::resumeMovie()
{
    m_queue->async([session = m_session] { session->resumeMovie(); });
}

QCoro::Task<std::optional<QUrl>> SessionCameraManager::stopMovie()
{
    // What is needed lives in the task.
    const auto queue = m_queue;
    const auto session = m_session;
    m_holdTimer.stop();
    const auto stopping = resultFrom(*queue, [session] { return session->stopMovie(); });
    const std::optional<QFuture<void>> closing = co_await stopping;
    if (!closing) {
        co_return std::nullopt;
    }
    co_await *closing;
    const auto ending = resultFrom(*queue, [session] { return session->endMovie(); });
    const std::optional<QUrl> file = co_await ending;
    co_return file;
}

} // namespace zivra
