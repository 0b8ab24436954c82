#include "app/RecordingCoordinator.h"

#include "app/ChosenDevices.h"
#include "capture/ZivraError.h"
#include "platform/PlatformError.h"

#include <QFile>
#include <QPointer>

#include <utility>

namespace zivra {

namespace {

void removeFile(const std::optional<QUrl> &url)
{
    if (url) {
        QFile::remove(url->toLocalFile());
    }
}

} // namespace

RecordingCoordinator::RecordingCoordinator(Collaborators collaborators, QObject *parent)
    : RecordingControls(parent),
      m_with(std::move(collaborators)),
      m_planner({m_with.settings, m_with.screens, m_with.content, m_with.screenAccess, m_with.areaSelector}),
      m_preview({m_with.settings, m_with.devices, m_with.camera, m_with.bubble, m_with.screens,
                 m_with.permissions, m_with.authorization},
                [this] { return m_phase == Phase::Idle; }),
      m_alerts(m_with.alerts, m_with.permissions),
      m_stopwatch(m_with.clock, [this](double seconds) { setElapsed(seconds); })
{
    // The notice comes before the change, so the preview follows one turn of the event loop later.
    connect(
        &m_with.settings, &Settings::willChange, this, [this] { m_preview.refresh(); }, Qt::QueuedConnection);
    connect(&m_with.settings, &Settings::shortcutsChanged, this, &RecordingCoordinator::shortcutsChanged);
    m_with.bubble.onSize = [this](BubbleSize size) {
        m_with.settings.setBubbleSize(size);
        m_with.bubble.resize(size);
    };
    m_with.bubble.onClose = [this] { closeCameraBubble(); };
}

void RecordingCoordinator::spawn(std::function<Task()> task)
{
    m_taskPending = true;
    QMetaObject::invokeMethod(
        this,
        [this, task = std::move(task)] {
            m_taskPending = false;
            task();
        },
        Qt::QueuedConnection);
}

void RecordingCoordinator::start()
{
    if (m_phase == Phase::Idle && !m_taskPending) {
        spawn([this] { return begin(m_with.settings.countdown(), false); });
    }
}

void RecordingCoordinator::finish()
{
    if (isRecording() && !m_taskPending) {
        spawn([this] { return finishTask(); });
    }
}

void RecordingCoordinator::restart()
{
    if (isRecording() && !m_taskPending) {
        spawn([this] { return restartTask(); });
    }
}

void RecordingCoordinator::cancel()
{
    if (!isRecording() || m_taskPending || m_askingToCancel) {
        return;
    }
    const bool wasRecording = m_phase == Phase::Recording;
    pause();
    cancelTask(wasRecording);
}

void RecordingCoordinator::togglePause()
{
    if (m_phase == Phase::Recording) {
        pause();
    } else if (m_phase == Phase::Paused) {
        resume();
    }
}

void RecordingCoordinator::pause()
{
    if (m_phase != Phase::Recording) {
        return;
    }
    if (m_screenRecorder) {
        m_screenRecorder->pause();
    }
    if (m_mode == RecordingMode::CameraOnly) {
        m_with.camera.pauseMovie();
    }
    m_stopwatch.pause();
    setPhase(Phase::Paused);
}

void RecordingCoordinator::resume()
{
    if (m_phase != Phase::Paused) {
        return;
    }
    if (m_screenRecorder) {
        m_screenRecorder->resume();
    }
    if (m_mode == RecordingMode::CameraOnly) {
        m_with.camera.resumeMovie();
    }
    m_stopwatch.resume();
    setPhase(Phase::Recording);
}

RecordingCoordinator::Task RecordingCoordinator::begin(bool useCountdown, bool reusePlan)
{
    std::exception_ptr failure;
    try {
        co_await prepareAndStart(useCountdown, reusePlan);
    } catch (...) {
        failure = std::current_exception();
    }
    if (!failure) {
        co_return;
    }
    tearDown();
    setPhase(Phase::Idle);
    if (!isCancellation(failure)) {
        co_await m_alerts.present(failure);
    }
}

RecordingCoordinator::Task RecordingCoordinator::prepareAndStart(bool useCountdown, bool reusePlan)
{
    ++m_take;
    setPhase(Phase::Preparing);
    if (onWillStart) {
        onWillStart();
    }
    setMode(m_with.settings.effectiveMode());
    const bool withScreen = m_mode != RecordingMode::CameraOnly;
    co_await askForPermissions();
    if (withScreen && !(reusePlan && m_plan)) {
        const CapturePlan plan = co_await m_planner.makePlan();
        m_plan = plan;
    }
    const Screen screen = targetScreen();
    if (m_mode == RecordingMode::ScreenOnly) {
        m_with.bubble.hide();
    } else {
        m_preview.startCamera();
        if (!m_cameraHidden) {
            m_preview.showBubble(screen, !withScreen);
        }
    }
    if (useCountdown) {
        setPhase(Phase::Countdown);
        const bool goOn = co_await m_with.countdown.run(screen, m_with.settings.countdownSeconds());
        if (!goOn) {
            throw ZivraError(ZivraError::cancelled);
        }
    }
    // The capture filter is made from the window numbers of these, so they come before it.
    m_with.controlBar.show(screen, *this);
    if (withScreen) {
        m_with.drawing.show(screen);
    }
    const QUrl url =
        m_with.library.newRecordingURL(withScreen ? QStringLiteral("mp4") : QStringLiteral("mov"));
    if (withScreen) {
        co_await startScreenCapture(url);
    } else {
        m_with.camera.startMovie(chosenMicrophone(m_with.settings, m_with.devices), url);
    }
    m_stopwatch.start();
    setPhase(Phase::Recording);
}

RecordingCoordinator::Task RecordingCoordinator::askForPermissions()
{
    if (m_mode != RecordingMode::ScreenOnly) {
        const bool granted = co_await m_with.permissions.request(MediaType::Video);
        if (!granted) {
            throw ZivraError(ZivraError::cameraPermission);
        }
    }
    if (m_with.settings.micEnabled()) {
        const bool granted = co_await m_with.permissions.request(MediaType::Audio);
        if (!granted) {
            throw ZivraError(ZivraError::micPermission);
        }
    }
}

Screen RecordingCoordinator::targetScreen() const
{
    if (m_plan && m_mode != RecordingMode::CameraOnly) {
        if (const auto screen = screenWithID(m_with.screens, m_plan->displayID)) {
            return *screen;
        }
    }
    return screenWithMouse(m_with.screens);
}

RecordingCoordinator::Task RecordingCoordinator::startScreenCapture(QUrl url)
{
    if (!m_plan) {
        throw ZivraError(ZivraError::noDisplay);
    }
    ScreenRecorderOptions options = co_await m_planner.takeOptions(*m_plan, keptWindows());
    if (const auto microphone = chosenMicrophone(m_with.settings, m_with.devices)) {
        options.microphoneID = microphone->uniqueID;
    }
    options.outputURL = url;

    std::unique_ptr<ScreenTake> recorder = m_with.makeTake(options);
    const int take = m_take;
    recorder->setErrorHandler([self = QPointer(this), take](const std::exception_ptr &error) {
        QMetaObject::invokeMethod(
            self.data(),
            [self, take, error] {
                if (self) {
                    self->takeDied(take, error);
                }
            },
            Qt::QueuedConnection);
    });
    co_await recorder->start();
    m_screenRecorder = std::move(recorder);
}

std::set<std::uint32_t> RecordingCoordinator::keptWindows() const
{
    std::set<std::uint32_t> kept;
    const auto bubble = m_with.bubble.panelWindowID();
    if (bubble && !m_cameraHidden) {
        kept.insert(*bubble);
    }
    if (const auto sheet = m_with.drawing.panelWindowID()) {
        kept.insert(*sheet);
    }
    return kept;
}

void RecordingCoordinator::takeDied(int take, const std::exception_ptr &error)
{
    if (take != m_take) {
        return;
    }
    if (onTakeDied) {
        onTakeDied(errorText(error));
    }
    if (isRecording()) {
        finish();
    }
}

QCoro::Task<std::optional<QUrl>> RecordingCoordinator::stopCapture()
{
    std::optional<QUrl> url;
    if (m_screenRecorder) {
        const std::unique_ptr<ScreenTake> recorder = std::move(m_screenRecorder);
        url = co_await recorder->stop();
    } else if (m_mode == RecordingMode::CameraOnly) {
        url = co_await m_with.camera.stopMovie();
    }
    co_return url;
}

RecordingCoordinator::Task RecordingCoordinator::finishTask()
{
    setPhase(Phase::Processing);
    m_stopwatch.stop();
    const std::optional<QUrl> url = co_await stopCapture();
    tearDown();
    if (!url) {
        co_await m_alerts.present(std::make_exception_ptr(ZivraError(ZivraError::recordingFailed)));
        setPhase(Phase::Idle);
        co_return;
    }
    try {
        co_await m_with.mergeAudioTracksIfNeeded(*url);
    } catch (const std::exception &) {
        // The take is whole with both its tracks, so it counts as finished.
    }
    m_with.library.refresh();
    if (onFinished) {
        onFinished(*url);
    }
    setPhase(Phase::Idle);
}

RecordingCoordinator::Task RecordingCoordinator::restartTask()
{
    setPhase(Phase::Processing);
    m_stopwatch.stop();
    const std::optional<QUrl> url = co_await stopCapture();
    removeFile(url);
    m_with.drawing.clearStrokes();
    co_await begin(m_with.settings.countdown(), true);
}

RecordingCoordinator::Task RecordingCoordinator::cancelTask(bool wasRecording)
{
    const int take = m_take;
    m_askingToCancel = true;
    const bool isConfirmed = co_await m_alerts.confirmDiscard();
    m_askingToCancel = false;
    // A hot key may have finished or restarted the take while the question stood.
    if (take != m_take || !isRecording() || m_taskPending) {
        co_return;
    }
    if (isConfirmed) {
        spawn([this] { return discard(); });
    } else if (wasRecording) {
        resume();
    }
}

RecordingCoordinator::Task RecordingCoordinator::discard()
{
    setPhase(Phase::Processing);
    m_stopwatch.stop();
    const std::optional<QUrl> url = co_await stopCapture();
    removeFile(url);
    tearDown();
    setPhase(Phase::Idle);
}

void RecordingCoordinator::tearDown()
{
    m_stopwatch.stop();
    m_with.controlBar.orderOut();
    m_with.drawing.hide();
    m_preview.stop();
    setCameraHidden(false);
    m_screenRecorder.reset();
}

void RecordingCoordinator::toggleCamera()
{
    if (m_mode != RecordingMode::ScreenAndCamera) {
        return;
    }
    setCameraHidden(!m_cameraHidden);
    if (m_cameraHidden) {
        m_with.bubble.hide();
    } else {
        m_preview.showBubble(targetScreen(), false);
    }
}

void RecordingCoordinator::closeCameraBubble()
{
    if (isRecording()) {
        toggleCamera();
    } else if (m_with.settings.mode() != RecordingMode::ScreenOnly) {
        m_with.settings.setMode(RecordingMode::ScreenOnly);
    }
}

void RecordingCoordinator::setPreviewing(bool previewing)
{
    m_preview.setWanted(previewing);
}

void RecordingCoordinator::setPhase(Phase phase)
{
    m_phase = phase;
    Q_EMIT phaseChanged();
}

void RecordingCoordinator::setElapsed(double seconds)
{
    m_elapsed = seconds;
    Q_EMIT elapsedChanged();
}

void RecordingCoordinator::setCameraHidden(bool hidden)
{
    m_cameraHidden = hidden;
    Q_EMIT cameraHiddenChanged();
}

void RecordingCoordinator::setMode(RecordingMode mode)
{
    m_mode = mode;
    Q_EMIT modeChanged();
}

} // namespace zivra
