#pragma once

#include "app/CameraPreview.h"
#include "app/CapturePlan.h"
#include "app/CapturePlanner.h"
#include "app/RecordingAlerts.h"
#include "app/TakeStopwatch.h"
#include "capture/CameraManager.h"
#include "capture/Devices.h"
#include "capture/Permissions.h"
#include "capture/ScreenTake.h"
#include "library/Library.h"
#include "overlays/AreaSelector.h"
#include "overlays/CameraBubbleController.h"
#include "overlays/ControlBarController.h"
#include "overlays/Countdown.h"
#include "overlays/DrawingOverlayController.h"
#include "platform/AlertPresenter.h"
#include "platform/Authorization.h"
#include "platform/MediaClock.h"
#include "platform/ShareableContent.h"
#include "settings/Settings.h"

#include <QCoroTask>
#include <QUrl>

#include <exception>
#include <functional>
#include <memory>
#include <optional>

namespace zivra {

/// The life of one recording: in which order permissions are asked, overlays appear, capture starts
/// and stops, and what becomes of the file.
///
/// There is one, on the main thread, living as long as the application: it must outlive the event
/// loop, since its tasks resume there. A task changes `phase` first and last, so that whatever
/// arrives while it is suspended is turned away by the guards.
class RecordingCoordinator final : public RecordingControls {
    Q_OBJECT

public:
    /// What it drives. Everything outlives the coordinator.
    struct Collaborators {
        Settings &settings;
        Devices &devices;
        CameraManager &camera;
        Library &library;
        Permissions &permissions;
        MediaAuthorization &authorization;
        ScreenCaptureAccess &screenAccess;
        Screens &screens;
        ContentQuery &content;
        AlertPresenter &alerts;
        MediaClock &clock;
        CameraBubbleController &bubble;
        DrawingOverlayController &drawing;
        ControlBarController &controlBar;
        CountdownController &countdown;
        AreaSelector &areaSelector;
        std::function<std::unique_ptr<ScreenTake>(const ScreenRecorderOptions &)> makeTake;
        /// Leaves the movie with one audio track; a failure leaves it as it was.
        std::function<QCoro::Task<>(QUrl)> mergeAudioTracksIfNeeded;
    };

    explicit RecordingCoordinator(Collaborators collaborators, QObject *parent = nullptr);

    [[nodiscard]] Phase phase() const override { return m_phase; }
    [[nodiscard]] double elapsed() const override { return m_elapsed; }
    [[nodiscard]] bool cameraHidden() const override { return m_cameraHidden; }
    [[nodiscard]] RecordingMode mode() const override { return m_mode; }
    [[nodiscard]] std::optional<Shortcut> shortcut(ShortcutAction action) const override
    {
        return m_with.settings.shortcut(action);
    }

    void start() override;
    void togglePause() override;
    void finish() override;
    void restart() override;
    void cancel() override;
    void toggleCamera() override;
    void pause();
    void resume();
    /// The recorder panel has appeared or gone; while it is there and nothing records, the camera shows.
    void setPreviewing(bool previewing);

    /// Called at the very start of every attempt to record.
    std::function<void()> onWillStart;
    /// Called once for each recording that was finished, while `phase` is still `processing`.
    std::function<void(const QUrl &)> onFinished;
    /// Told why a take died on its own. For a log: the take itself ends like a finished one.
    std::function<void(const QString &reason)> onTakeDied;

private:
    using Task = QCoro::Task<>;

    void spawn(std::function<Task()> task);
    Task begin(bool useCountdown, bool reusePlan);
    Task prepareAndStart(bool useCountdown, bool reusePlan);
    Task askForPermissions();
    [[nodiscard]] Screen targetScreen() const;
    Task startScreenCapture(QUrl url);
    [[nodiscard]] std::set<std::uint32_t> keptWindows() const;
    void takeDied(int take, const std::exception_ptr &error);
    QCoro::Task<std::optional<QUrl>> stopCapture();
    Task finishTask();
    Task restartTask();
    Task cancelTask(bool wasRecording);
    Task discard();
    void tearDown();
    void closeCameraBubble();
    void setPhase(Phase phase);
    void setElapsed(double seconds);
    void setCameraHidden(bool hidden);
    void setMode(RecordingMode mode);

    Collaborators m_with;
    CapturePlanner m_planner;
    CameraPreview m_preview;
    RecordingAlerts m_alerts;
    TakeStopwatch m_stopwatch;
    Phase m_phase = Phase::Idle;
    double m_elapsed = 0; ///< seconds
    bool m_cameraHidden = false;
    RecordingMode m_mode = RecordingMode::ScreenAndCamera;
    std::optional<CapturePlan> m_plan;
    std::unique_ptr<ScreenTake> m_screenRecorder;
    bool m_taskPending = false;    ///< a task has been asked for and not begun
    bool m_askingToCancel = false; ///< the question is on the screen
    int m_take = 0;                ///< counts the takes, to tell a late message of an earlier one
};

} // namespace zivra
