#include "desktop/x11/capture/X11PictureSource.h"

#include "desktop/threads/MonotonicTime.h"
#include "desktop/x11/capture/FramePacer.h"
#include "desktop/x11/capture/ScreenPicture.h"
#include "platform/PlatformError.h"

#include <QPromise>

#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <optional>
#include <utility>

namespace zivra::desktop {

namespace {

constexpr MediaTime kRepeatInterval = MediaTime::fromMilliseconds(1000);

/// Wakes a thread that waits in poll().
class WakeUp {
public:
    WakeUp() : m_descriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}
    ~WakeUp() { close(m_descriptor); }
    WakeUp(const WakeUp &) = delete;
    WakeUp &operator=(const WakeUp &) = delete;

    [[nodiscard]] int descriptor() const { return m_descriptor; }
    void signal() const { eventfd_write(m_descriptor, 1); }

private:
    int m_descriptor;
};

} // namespace

/// What the thread does. All but `requestStop()` and the futures is the thread's alone.
class X11PictureSource::Loop {
public:
    Loop(CaptureConfiguration configuration, SampleHandler onSample, EndHandler onEnd)
        : m_configuration(std::move(configuration)),
          m_onSample(std::move(onSample)),
          m_onEnd(std::move(onEnd)),
          m_pacer(m_configuration.minimumFrameInterval)
    {
        m_started.start();
        m_stopped.start();
    }

    void run(const QByteArray &displayName, const ContentFilter &filter);
    void requestStop()
    {
        m_stopRequested = true;
        m_wakeUp.signal();
    }
    [[nodiscard]] QFuture<void> started() const { return m_started.future(); }
    [[nodiscard]] QFuture<void> stopped() const { return m_stopped.future(); }

private:
    void capture(ScreenPicture &picture);
    void wait(const ScreenPicture &picture) const;
    [[nodiscard]] MediaTime nextRepeat() const;
    void deliver(ScreenPicture &picture, bool evenIfUnchanged);

    CaptureConfiguration m_configuration;
    SampleHandler m_onSample;
    EndHandler m_onEnd;
    FramePacer m_pacer;
    MediaTime m_lastFrame; ///< invalid before the first one
    QPromise<void> m_started;
    QPromise<void> m_stopped;
    WakeUp m_wakeUp;
    std::atomic<bool> m_stopRequested = false;
};

void X11PictureSource::Loop::run(const QByteArray &displayName, const ContentFilter &filter)
{
    pthread_setname_np(pthread_self(), "zivra.picture");
    bool hasStarted = false;
    try {
        ScreenPicture picture(displayName, filter, m_configuration);
        hasStarted = true;
        m_started.finish();
        capture(picture);
    } catch (const PlatformError &) {
        if (!hasStarted) {
            m_started.setException(std::current_exception());
            m_started.finish();
        } else if (!m_stopRequested) {
            m_onEnd(std::current_exception());
        }
    }
    m_stopped.finish();
}

void X11PictureSource::Loop::capture(ScreenPicture &picture)
{
    while (!m_stopRequested) {
        picture.noteEvents();
        const MediaTime now = monotonicTime();
        const bool mustRepeat = now >= nextRepeat();
        if ((picture.mayHaveChanged() || mustRepeat) && now >= m_pacer.due()) {
            deliver(picture, mustRepeat);
        }
        wait(picture);
    }
    // The end of the movie is when it was stopped, not when its picture last changed.
    if (m_lastFrame.isValid() && monotonicTime() >= m_lastFrame + m_configuration.minimumFrameInterval) {
        deliver(picture, true);
    }
}

MediaTime X11PictureSource::Loop::nextRepeat() const
{
    return m_lastFrame.isValid() ? m_lastFrame + kRepeatInterval : MediaTime::zero();
}

void X11PictureSource::Loop::wait(const ScreenPicture &picture) const
{
    std::array<pollfd, 2> descriptors{
        {{m_wakeUp.descriptor(), POLLIN, 0}, {picture.fileDescriptor(), POLLIN, 0}}};
    // When a frame is to come anyway, what happens before it makes no difference but for the place of a
    // press: the thread sleeps through it.
    const bool hasChanged = picture.mayHaveChanged();
    const bool listens = !hasChanged || m_configuration.showsMouseClicks;
    const MediaTime until = hasChanged ? m_pacer.due() : std::max(nextRepeat(), m_pacer.due());
    constexpr std::int64_t kSecond = 1'000'000'000;
    const std::int64_t left = std::max<std::int64_t>(0, (until - monotonicTime()).nanoseconds());
    const std::timespec timeout{left / kSecond, left % kSecond};
    ppoll(descriptors.data(), listens ? 2 : 1, &timeout, nullptr);
}

void X11PictureSource::Loop::deliver(ScreenPicture &picture, bool evenIfUnchanged)
{
    const MediaTime asked = monotonicTime();
    const auto frame = picture.takeFrame(evenIfUnchanged);
    if (!frame) {
        if (evenIfUnchanged || picture.mayHaveChanged()) {
            m_pacer.frameTaken(asked); // there was no buffer for it
        } else {
            m_pacer.nothingFound(asked);
        }
        return;
    }
    m_pacer.frameTaken(asked);
    const auto justAfter = MediaTime::fromNanoseconds(1);
    m_lastFrame = m_lastFrame.isValid() ? std::max(frame->time, m_lastFrame + justAfter) : frame->time;
    m_onSample(MediaSample(frame->picture, {m_lastFrame, MediaTime::invalid(), MediaTime::invalid()},
                           FrameStatus::Complete));
}

X11PictureSource::X11PictureSource(QByteArray displayName, ContentFilter filter,
                                   CaptureConfiguration configuration)
    : m_displayName(std::move(displayName)),
      m_filter(std::move(filter)),
      m_configuration(std::move(configuration))
{
}

X11PictureSource::~X11PictureSource()
{
    if (m_thread.joinable()) {
        m_loop->requestStop();
        m_thread.join();
    }
}

QFuture<void> X11PictureSource::start(SampleHandler onSample, EndHandler onEnd)
{
    m_loop = std::make_shared<Loop>(m_configuration, std::move(onSample), std::move(onEnd));
    m_thread =
        std::thread([loop = m_loop, name = m_displayName, filter = m_filter] { loop->run(name, filter); });
    return m_loop->started();
}

QFuture<void> X11PictureSource::stop()
{
    if (!m_loop) {
        return QtFuture::makeReadyFuture();
    }
    m_loop->requestStop();
    return m_loop->stopped();
}

} // namespace zivra::desktop
