#include "app/RecordCommand.h"

#include "app/ChosenDevices.h"

#include <chrono>
#include <cmath>
#include <utility>

namespace zivra {

namespace {

Platform withScreens(const Platform &platform, Screens &screens)
{
    return {platform.defaults,      platform.clock,          screens,
            platform.content,       platform.screenAccess,   platform.authorization,
            platform.deviceCatalog, platform.captureStreams, platform.movies,
            platform.queues,        platform.files,          platform.alerts,
            platform.workspace};
}

} // namespace

QPointF ScreensAsIfMouseOn::mouseLocation() const
{
    const auto screen = screenWithID(m_screens, m_displayID);
    return screen ? screen->frame.center() : m_screens.mouseLocation();
}

RecordCommand::RecordCommand(Platform platform, CameraManager &camera, CameraBubbleController &bubble,
                             RecordArguments arguments)
    : m_arguments(std::move(arguments)),
      m_screens(platform.screens, m_arguments.displayID),
      m_platform(withScreens(platform, m_screens)),
      m_settings(m_platform.defaults),
      m_devices(m_platform.deviceCatalog),
      m_library(m_platform.files, m_platform.movies),
      m_permissions(m_platform.authorization, m_platform.workspace),
      m_areaSelector(m_arguments.rectangle),
      m_coordinator(
          coordinatorCollaborators(m_platform, m_settings, m_devices, m_library, m_permissions,
                                   {camera, bubble, m_drawing, m_controlBar, m_countdown, m_areaSelector}))
{
    applyArguments();
    m_limit.setSingleShot(true);
    m_limit.setTimerType(Qt::PreciseTimer);
    connect(&m_limit, &QTimer::timeout, this, &RecordCommand::stop);
    connect(&m_coordinator, &RecordingCoordinator::phaseChanged, this, &RecordCommand::phaseChanged);
}

void RecordCommand::applyArguments()
{
    m_settings.setMode(m_arguments.mode);
    m_settings.setCaptureArea(m_arguments.area);
    m_settings.setWindowID(m_arguments.windowID);
    m_settings.setDisplayID(m_arguments.displayID);
    m_settings.setQuality(m_arguments.quality);
    m_settings.setSystemAudio(m_arguments.systemAudio);
    m_settings.setCameraID(m_arguments.cameraID);
    m_settings.setMicEnabled(m_arguments.microphone);
    m_settings.setMicID(m_arguments.microphoneID);
    m_settings.setHighlightClicks(m_arguments.clicks);
    m_settings.setCountdown(false);
}

void RecordCommand::start(std::function<void(const std::optional<QUrl> &)> onEnd,
                          std::function<void(const QString &)> onTrouble)
{
    if (const QString missing = missingDevice(); !missing.isEmpty()) {
        onTrouble(missing);
        onEnd(std::nullopt);
        return;
    }
    m_onEnd = std::move(onEnd);
    m_coordinator.onFinished = [this](const QUrl &movie) { m_movie = movie; };
    m_coordinator.onTakeDied = [this, onTrouble = std::move(onTrouble)](const QString &reason) {
        onTrouble(reason);
        stop();
    };
    m_coordinator.start();
}

QString RecordCommand::missingDevice() const
{
    if (m_arguments.displayID != 0 && !screenWithID(m_screens, m_arguments.displayID)) {
        return QStringLiteral("there is no display %1").arg(m_arguments.displayID);
    }
    if (!m_arguments.microphoneID.isEmpty() &&
        !deviceWithID(m_devices.microphones(), m_arguments.microphoneID)) {
        return QStringLiteral("there is no microphone \"%1\"").arg(m_arguments.microphoneID);
    }
    return m_arguments.mode == RecordingMode::ScreenOnly ? QString() : missingCamera();
}

QString RecordCommand::missingCamera() const
{
    if (!m_arguments.cameraID.isEmpty() && !deviceWithID(m_devices.cameras(), m_arguments.cameraID)) {
        return QStringLiteral("there is no camera \"%1\"").arg(m_arguments.cameraID);
    }
    return m_devices.cameras().empty() ? QStringLiteral("there is no camera") : QString();
}

void RecordCommand::stop()
{
    m_stopRequested = true;
    m_coordinator.finish();
}

void RecordCommand::phaseChanged()
{
    switch (m_coordinator.phase()) {
    case RecordingCoordinator::Phase::Recording:
        if (m_stopRequested) {
            m_coordinator.finish();
        } else if (m_arguments.seconds) {
            m_limit.start(std::chrono::milliseconds(std::llround(*m_arguments.seconds * 1000)));
        }
        break;
    case RecordingCoordinator::Phase::Idle:
        m_limit.stop();
        // An error of the start is still to be presented by the task that is ending now.
        QMetaObject::invokeMethod(
            this,
            [this] {
                if (const auto done = std::exchange(m_onEnd, nullptr)) {
                    done(m_movie);
                }
            },
            Qt::QueuedConnection);
        break;
    default:
        break;
    }
}

} // namespace zivra
