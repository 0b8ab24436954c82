#include "desktop/camera/CameraThread.h"

#include "platform/PlatformError.h"

#include <pthread.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <utility>

namespace zivra::desktop {

CameraThread::CameraThread(std::unique_ptr<CameraReader> reader)
    : m_reader(std::move(reader)),
      m_wakeUp(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    m_started.start();
    m_stopped.start();
}

CameraThread::~CameraThread()
{
    if (m_thread.joinable()) {
        static_cast<void>(stop());
        m_thread.join();
    }
    close(m_wakeUp);
}

QFuture<void> CameraThread::start(SampleHandler onSample, EndHandler onEnd)
{
    m_thread = std::thread([this, onSample = std::move(onSample), onEnd = std::move(onEnd)] {
        pthread_setname_np(pthread_self(), "zivra.camera.in");
        run(onSample, onEnd);
        m_reader.reset();
        m_stopped.finish();
    });
    return m_started.future();
}

QFuture<void> CameraThread::stop()
{
    if (!m_thread.joinable()) {
        return QtFuture::makeReadyFuture();
    }
    m_stopRequested = true;
    eventfd_write(m_wakeUp, 1);
    return m_stopped.future();
}

void CameraThread::run(const SampleHandler &onSample, const EndHandler &onEnd)
{
    bool hasStarted = false;
    try {
        m_reader->open();
        hasStarted = true;
        m_started.finish();
        while (!m_stopRequested) {
            if (const auto picture = m_reader->next(m_wakeUp)) {
                onSample(*picture);
            }
        }
    } catch (const PlatformError &) {
        if (!hasStarted) {
            m_started.setException(std::current_exception());
            m_started.finish();
        } else if (!m_stopRequested) {
            onEnd(std::current_exception());
        }
    }
}

} // namespace zivra::desktop
