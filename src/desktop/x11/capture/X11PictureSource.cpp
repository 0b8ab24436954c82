#include "desktop/x11/capture/X11PictureSource.h"

#include "desktop/x11/X11Scale.h"
#include "desktop/x11/capture/CaptureArea.h"
#include "desktop/x11/capture/ClickRings.h"
#include "desktop/x11/capture/CursorPainter.h"
#include "desktop/x11/capture/FrameConverter.h"
#include "desktop/x11/capture/ScreenGrabber.h"
#include "desktop/x11/capture/ScreenWatcher.h"
#include "desktop/x11/capture/ServerFeatures.h"
#include "platform/PlatformError.h"

#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <ctime>
#include <utility>

namespace zivra::desktop {

namespace {

constexpr MediaTime kRepeatInterval = MediaTime::fromMilliseconds(1000);

MediaTime now()
{
    std::timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return MediaTime::fromNanoseconds(time.tv_sec * std::int64_t{1'000'000'000} + time.tv_nsec);
}

/// An eventfd that can be waited for together with the connection.
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

/// What the thread does. Everything but `requestStop()` and the promises is the thread's alone.
class X11PictureSource::Loop {
public:
    Loop(ContentFilter filter, CaptureConfiguration configuration, SampleHandler onSample, EndHandler onEnd)
        : m_filter(std::move(filter)),
          m_configuration(std::move(configuration)),
          m_onSample(std::move(onSample)),
          m_onEnd(std::move(onEnd))
    {
        m_started.start();
        m_stopped.start();
    }

    void run();
    void requestStop()
    {
        m_stopRequested = true;
        m_wakeUp.signal();
    }
    [[nodiscard]] QFuture<void> started() const { return m_started.future(); }
    [[nodiscard]] QFuture<void> stopped() const { return m_stopped.future(); }

private:
    /// What exists only while the connection does.
    struct Capture {
        explicit Capture(const ContentFilter &filter, const CaptureConfiguration &configuration);

        XcbConnection connection;
        QRect area; ///< pixels of the root window
        ScreenGrabber grabber;
        ScreenWatcher watcher;
        FrameConverter converter;
        FramePool pool;
        ClickRings rings;

    private:
        [[nodiscard]] static QRect findArea(const XcbConnection &connection, const ContentFilter &filter,
                                            const CaptureConfiguration &configuration);
    };

    void captureUntilStopped(Capture &capture);
    void wait(const Capture &capture) const;
    void noteEvents(Capture &capture);
    void captureIfChanged(Capture &capture);
    void captureFrame(Capture &capture);
    void deliver(std::shared_ptr<const VideoFrame> frame, MediaTime time);
    void repeatLastFrame(MediaTime time);
    void finishLastFrame();

    ContentFilter m_filter;
    CaptureConfiguration m_configuration;
    SampleHandler m_onSample;
    EndHandler m_onEnd;
    QPromise<void> m_started;
    QPromise<void> m_stopped;
    WakeUp m_wakeUp;
    std::atomic<bool> m_stopRequested = false;

    bool m_isDirty = true; ///< the picture may differ from the last frame, for another reason than drawing
    MediaTime m_nextFrame = MediaTime::zero(); ///< no frame before this
    MediaTime m_lastTime = MediaTime::zero();  ///< of the last frame
    std::shared_ptr<const VideoFrame> m_lastFrame;
};

QRect X11PictureSource::Loop::Capture::findArea(const XcbConnection &connection, const ContentFilter &filter,
                                                const CaptureConfiguration &configuration)
{
    if (const QString missing = missingServerFeatures(connection); !missing.isEmpty()) {
        throw PlatformError(missing);
    }
    const auto area = captureArea(connection, filter.displayID, configuration.sourceRect);
    if (!area) {
        throw PlatformError(QStringLiteral("The display to be recorded is not connected."));
    }
    return *area;
}

X11PictureSource::Loop::Capture::Capture(const ContentFilter &filter,
                                         const CaptureConfiguration &configuration)
    : area(findArea(connection, filter, configuration)),
      grabber(connection, filter, area),
      watcher(connection, area, grabber.composesWindows()),
      converter(area.size(), configuration.outputSize),
      // One more than may be in flight: the last frame is kept for its repetition.
      pool(configuration.outputSize, configuration.queueDepth + 1),
      rings(pixelsPerPoint(connection))
{
}

void X11PictureSource::Loop::run()
{
    pthread_setname_np(pthread_self(), "zivra.capture");
    bool hasStarted = false;
    try {
        Capture capture(m_filter, m_configuration);
        hasStarted = true;
        m_started.finish();
        captureUntilStopped(capture);
        finishLastFrame();
    } catch (const PlatformError &) {
        const auto error = std::current_exception();
        if (!hasStarted) {
            m_started.setException(error);
            m_started.finish();
        } else if (!m_stopRequested) {
            m_onEnd(error);
        }
    }
    m_lastFrame.reset();
    m_stopped.finish();
}

void X11PictureSource::Loop::captureUntilStopped(Capture &capture)
{
    while (!m_stopRequested) {
        if (!capture.connection.isAlive()) {
            throw PlatformError(QStringLiteral("The connection to the X server was lost."));
        }
        if ((m_isDirty || capture.watcher.hasDamage()) && now() >= m_nextFrame) {
            captureIfChanged(capture);
        }
        if (m_lastFrame && now() >= m_lastTime + kRepeatInterval) {
            repeatLastFrame(now());
        }
        // Events may have come in with a reply, which the descriptor does not tell.
        noteEvents(capture);
        wait(capture);
    }
}

void X11PictureSource::Loop::wait(const Capture &capture) const
{
    const bool hasWork = m_isDirty || capture.watcher.hasDamage();
    const MediaTime due = hasWork ? m_nextFrame : m_lastTime + kRepeatInterval;
    const std::int64_t left = std::max<std::int64_t>(0, (due - now()).nanoseconds());
    const std::timespec timeout{left / 1'000'000'000, left % 1'000'000'000};
    pollfd descriptors[] = {{capture.connection.fileDescriptor(), POLLIN, 0},
                            {m_wakeUp.descriptor(), POLLIN, 0}};
    // Once a frame is due, changes that come before it make no difference: the thread sleeps through them.
    pollfd *const first = hasWork ? descriptors + 1 : descriptors;
    ppoll(first, static_cast<nfds_t>(std::end(descriptors) - first), &timeout, nullptr);
}

void X11PictureSource::Loop::noteEvents(Capture &capture)
{
    const ScreenWatcher::Events events = capture.watcher.takeEvents();
    m_isDirty = m_isDirty || events.windowsChanged || (m_configuration.showsCursor && events.cursorMoved);
    if (m_configuration.showsMouseClicks) {
        for (const QPoint place : events.presses) {
            capture.rings.add(place, now());
        }
        m_isDirty = m_isDirty || !events.presses.empty();
    }
    if (events.displaysChanged && !captureArea(capture.connection, m_filter.displayID, std::nullopt) &&
        capture.connection.isAlive()) {
        throw PlatformError(QStringLiteral("The display being recorded was disconnected."));
    }
}

void X11PictureSource::Loop::captureIfChanged(Capture &capture)
{
    const bool wasDrawn = capture.watcher.takeDamage();
    if (!m_isDirty && !wasDrawn) {
        return;
    }
    m_isDirty = false;
    captureFrame(capture);
    if (capture.rings.areVisible(now())) {
        m_isDirty = true;
    }
}

void X11PictureSource::Loop::captureFrame(Capture &capture)
{
    // The rhythm is kept where it can be, so that a picture that changes as often as frames are allowed
    // loses none to the thread's waking up late.
    const MediaTime time = now();
    const MediaTime interval = m_configuration.minimumFrameInterval;
    m_nextFrame = m_nextFrame + interval > time ? m_nextFrame + interval : time + interval;

    const bool isGrabbed = capture.grabber.grab();
    capture.watcher.watchWindows(capture.grabber.shownWindows());
    if (capture.grabber.hasLostItsWindow() && capture.connection.isAlive()) {
        throw PlatformError(QStringLiteral("The window being recorded was closed."));
    }
    std::unique_ptr<FrameBuffer> buffer = isGrabbed ? capture.pool.take() : nullptr;
    if (!buffer) {
        m_isDirty = isGrabbed;
        return;
    }
    if (m_configuration.showsCursor) {
        paintCursor(capture.connection, capture.grabber.image(), capture.area.topLeft());
    }
    capture.rings.paint(capture.grabber.image(), capture.area.topLeft(), time);
    capture.converter.convert(capture.grabber.image(), *buffer);
    deliver(capture.pool.wrap(std::move(buffer)), time);
}

void X11PictureSource::Loop::deliver(std::shared_ptr<const VideoFrame> frame, MediaTime time)
{
    m_lastTime = time;
    m_lastFrame = std::move(frame);
    m_onSample(
        MediaSample(m_lastFrame, {time, MediaTime::invalid(), MediaTime::invalid()}, FrameStatus::Complete));
}

void X11PictureSource::Loop::repeatLastFrame(MediaTime time)
{
    auto again = std::make_shared<VideoFrame>(*m_lastFrame);
    again->changed.emplace();
    deliver(std::move(again), time);
}

/// The end of the movie is when it was stopped, not when its picture last changed.
void X11PictureSource::Loop::finishLastFrame()
{
    const MediaTime time = now();
    if (m_lastFrame && time >= m_lastTime + m_configuration.minimumFrameInterval) {
        repeatLastFrame(time);
    }
}

X11PictureSource::X11PictureSource(ContentFilter filter, CaptureConfiguration configuration)
    : m_filter(std::move(filter)),
      m_configuration(std::move(configuration))
{
}

X11PictureSource::~X11PictureSource()
{
    if (m_loop) {
        m_loop->requestStop();
    }
}

QFuture<void> X11PictureSource::start(SampleHandler onSample, EndHandler onEnd)
{
    m_loop = std::make_shared<Loop>(m_filter, m_configuration, std::move(onSample), std::move(onEnd));
    m_thread = std::jthread([loop = m_loop] { loop->run(); });
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
