#include "app/FakeSurfaces.h"
#include "app/RecordingCoordinator.h"
#include "capture/ZivraError.h"
#include "platform/PlatformError.h"

#include <QCoreApplication>
#include <QFile>
#include <QMetaEnum>

#include <gtest/gtest.h>

#include <cmath>

namespace zivra::test {

namespace {

using Phase = RecordingCoordinator::Phase;

QString nameOf(Phase phase)
{
    return QString::fromLatin1(QMetaEnum::fromType<Phase>().valueToKey(static_cast<int>(phase)));
}

/// A coordinator among fakes that all write to one log: one screen (number 1), nothing refused, no
/// countdown, no microphone, `screenOnly`.
struct CoordinatorTest : testing::Test, FakeWorld {
    CoordinatorTest()
    {
        settings.setMode(RecordingMode::ScreenOnly);
        settings.setMicEnabled(false);
        settings.setCountdown(false);
        content.content.displays = {{1, QRectF(0, 0, 1920, 1080)}};
        QObject::connect(&coordinator, &RecordingCoordinator::phaseChanged,
                         [this] { log << nameOf(coordinator.phase()); });
        coordinator.onWillStart = [this] { log << "willStart"; };
        coordinator.onFinished = [this](const QUrl &url) { log << "finished " + url.fileName(); };
        QCoreApplication::processEvents();
        log.clear();
    }

    RecordingCoordinator::Collaborators collaborators()
    {
        return {settings,
                devices,
                camera,
                library,
                permissions,
                authorization,
                screenAccess,
                screens,
                content,
                alerts,
                clock,
                bubble,
                drawing,
                controlBar,
                countdown,
                areaSelector,
                [this](const ScreenRecorderOptions &options) { return takes.make(options); },
                [this](const QUrl &) -> QCoro::Task<> {
                    log << "merge";
                    if (mergeFails) {
                        throw PlatformError("no space");
                    }
                    co_return;
                }};
    }

    void startRecording()
    {
        coordinator.start();
        settle();
        ASSERT_EQ(coordinator.phase(), Phase::Recording) << log.join(", ").toStdString();
        log.clear();
    }
    /// The message of the only alert that was shown since the last call.
    QString alertShown()
    {
        const auto shown = std::exchange(alerts.shown, {});
        return shown.size() == 1 ? shown.front().message : QString("%1 alerts").arg(shown.size());
    }

    FakeTakes takes{log};
    bool mergeFails = false;
    Settings settings{defaults};
    Devices devices{catalog};
    Library library{files, movies};
    Permissions permissions{authorization, workspace};
    RecordingCoordinator coordinator{collaborators()};
};

const Log kTornDown{"bar.orderOut", "drawing.hide", "bubble.hide", "camera.stop"};

} // namespace

TEST_F(CoordinatorTest, RunsAScreenTakeInOrder)
{
    coordinator.start();
    EXPECT_EQ(coordinator.phase(), Phase::Idle) << "the phase changes one turn later";
    coordinator.start();
    settle();
    EXPECT_EQ(taken(), Log({"Preparing", "willStart", "bubble.hide", "bar.show", "drawing.show", "take.start",
                            "Recording"}));
    EXPECT_EQ(takes.options.outputSize, QSizeF(1920, 1080));
    EXPECT_FALSE(takes.options.sourceRect || takes.options.microphoneID);
    EXPECT_TRUE(takes.options.outputURL.fileName().endsWith(".mp4"));

    coordinator.start();
    coordinator.finish();
    coordinator.finish();
    settle();
    EXPECT_EQ(taken(),
              Log({"Processing", "take.stop"}) + kTornDown + Log({"merge", "finished take.mp4", "Idle"}));
    EXPECT_TRUE(alerts.shown.empty());
}

TEST_F(CoordinatorTest, ShowsTheCameraAndCountsDownBeforeTheBarAppears)
{
    settings.setMode(RecordingMode::ScreenAndCamera);
    settings.setCountdown(true);
    settings.setMicEnabled(true);
    settings.setCameraID("gone");
    catalog.cameras = {{"cam.1", "One"}, {"cam.2", "Two"}};
    catalog.microphones = {{"mic.1", "One"}, {"mic.2", "Two"}};
    devices.refresh();
    settings.setMicID("mic.2");
    settle();
    taken();
    coordinator.start();
    settle();
    EXPECT_EQ(taken(), Log({"Preparing", "willStart", "camera.start cam.1", "bubble.show 1", "Countdown",
                            "countdown 3", "bar.show", "drawing.show", "take.start", "Recording"}));
    EXPECT_EQ(takes.options.microphoneID, "mic.2");
}

TEST_F(CoordinatorTest, IgnoresEverythingWhilePreparingAndCountingDown)
{
    settings.setCountdown(true);
    countdown.counting.held = true;
    countdown.goOn = false;
    coordinator.start();
    settle();
    ASSERT_EQ(coordinator.phase(), Phase::Countdown);
    taken();
    coordinator.start();
    coordinator.finish();
    coordinator.restart();
    coordinator.cancel();
    coordinator.togglePause();
    settle();
    EXPECT_EQ(taken(), Log());
    countdown.counting.release();
    settle();
    EXPECT_EQ(taken(), kTornDown + Log({"Idle"})) << "called off: silently";
    EXPECT_TRUE(alerts.shown.empty());
}

TEST_F(CoordinatorTest, RecordsTheCameraAlone)
{
    settings.setMode(RecordingMode::CameraOnly);
    settings.setMicEnabled(true);
    catalog.microphones = {{"mic.1", "One"}};
    devices.refresh();
    screenAccess.granted = false;
    camera.movie = QUrl::fromLocalFile("/nowhere/camera.mov");
    settle();
    taken();
    coordinator.start();
    settle();
    EXPECT_EQ(taken(), Log({"Preparing", "willStart", "camera.start none", "bubble.show 1 cameraOnly",
                            "bar.show", "camera.startMovie mic.1 mov", "Recording"}));
    coordinator.toggleCamera();
    EXPECT_FALSE(coordinator.cameraHidden());
    coordinator.togglePause();
    coordinator.togglePause();
    coordinator.finish();
    settle();
    EXPECT_EQ(taken(), Log({"camera.pauseMovie", "Paused", "camera.resumeMovie", "Recording", "Processing",
                            "camera.stopMovie"}) +
                           kTornDown + Log({"merge", "finished camera.mov", "Idle"}));
}

TEST_F(CoordinatorTest, CountsRecordedTimeWithoutPauses)
{
    startRecording();
    const auto pass = [this](double seconds) { clock.advance(std::llround(seconds * 1000)); };
    for (const double segment : {10.0, 5.0, 2.0}) {
        pass(segment);
        coordinator.pause();
        coordinator.pause();
        pass(100);
        coordinator.resume();
        coordinator.resume();
    }
    for (int turn = 0; turn < 2000 && coordinator.elapsed() == 0; ++turn) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    EXPECT_DOUBLE_EQ(coordinator.elapsed(), 17);
    coordinator.togglePause();
    EXPECT_EQ(coordinator.phase(), Phase::Paused);
    coordinator.finish();
    settle();
    EXPECT_EQ(coordinator.phase(), Phase::Idle) << "a paused take finishes too";
}

TEST_F(CoordinatorTest, RestartKeepsPlanAndOverlaysAndDropsTheFile)
{
    takes.movie = files.addFile("take.mp4");
    settings.setCaptureArea(CaptureArea::CustomArea);
    areaSelector.area = QRectF(10, 20, 300, 200);
    startRecording();
    areaSelector.askedFor = 0;
    countdown.counting.held = true;
    settings.setCountdown(true);
    coordinator.restart();
    coordinator.restart();
    settle();
    coordinator.restart();
    settle();
    EXPECT_EQ(taken(), Log({"Processing", "take.stop", "drawing.clear", "Preparing", "willStart",
                            "bubble.hide", "Countdown", "countdown 3"}));
    EXPECT_FALSE(QFile::exists(takes.movie->toLocalFile()));
    countdown.counting.release();
    settle();
    EXPECT_EQ(taken(), Log({"bar.show", "drawing.show", "take.start", "Recording"}));
    EXPECT_EQ(areaSelector.askedFor, 0U) << "the area is not chosen again";
    EXPECT_EQ(takes.options.sourceRect, QRectF(10, 20, 300, 200));
    EXPECT_EQ(takes.options.outputSize, QSizeF(300, 200));
}

TEST_F(CoordinatorTest, RestartOnADisplayThatIsGoneTearsDown)
{
    startRecording();
    content.content.displays.clear();
    coordinator.restart();
    settle();
    EXPECT_EQ(taken(), Log({"Processing", "take.stop", "drawing.clear", "Preparing", "willStart",
                            "bubble.hide", "bar.show", "drawing.show"}) +
                           kTornDown + Log({"Idle"}));
    EXPECT_EQ(alertShown(), "Couldn't find the display to record.");
}

TEST_F(CoordinatorTest, CancelAsksFirst)
{
    takes.movie = files.addFile("take.mp4");
    startRecording();
    alerts.answer.button = 1;
    coordinator.cancel();
    settle();
    EXPECT_EQ(taken(), Log({"take.pause", "Paused", "take.resume", "Recording"}));
    EXPECT_EQ(alerts.shown.front().informativeText, "The recording will be discarded. This can't be undone.");
    EXPECT_EQ(alerts.shown.front().buttons, QStringList({"Delete", "Keep Recording"}));
    EXPECT_EQ(alertShown(), "Delete this recording?");

    coordinator.pause();
    taken();
    alerts.answer.button = 1;
    coordinator.cancel();
    settle();
    EXPECT_EQ(taken(), Log()) << "a paused recording stays paused";
    alerts.answer.button = 0;
    coordinator.cancel();
    settle();
    EXPECT_EQ(taken(), Log({"Processing", "take.stop"}) + kTornDown + Log({"Idle"}));
    EXPECT_FALSE(QFile::exists(takes.movie->toLocalFile()));
}

TEST_F(CoordinatorTest, AnAnswerThatComesTooLateDiscardsNothing)
{
    startRecording();
    alerts.answering.held = true;
    coordinator.cancel();
    coordinator.cancel();
    settle();
    EXPECT_EQ(alertShown(), "Delete this recording?") << "asked once";
    coordinator.finish();
    settle();
    coordinator.start();
    settle();
    taken();
    alerts.answering.release();
    settle();
    EXPECT_EQ(taken(), Log()) << "the question was about another take";
    EXPECT_EQ(coordinator.phase(), Phase::Recording);
}

TEST_F(CoordinatorTest, RefusedPermissionsAreExplainedAndLeadToTheSettings)
{
    struct Case {
        const char *message;
        const char *pane;
        std::function<void(bool)> refuse;
    };
    settings.setMode(RecordingMode::ScreenAndCamera);
    settings.setMicEnabled(true);
    settle();
    const auto refuse = [this](MediaType type) {
        return [this, type](bool refused) {
            authorization.statuses[type] =
                refused ? AuthorizationStatus::Denied : AuthorizationStatus::Authorized;
        };
    };
    const std::vector<Case> cases{
        {"Zivra needs Camera permission.", "Privacy_Camera", refuse(MediaType::Video)},
        {"Zivra needs Microphone permission.", "Privacy_Microphone", refuse(MediaType::Audio)},
        {"Zivra needs Screen Recording permission.", "Privacy_ScreenCapture",
         [this](bool refused) { screenAccess.granted = !refused; }}};
    for (const Case &one : cases) {
        one.refuse(true);
        alerts.answer.button = 0;
        taken();
        coordinator.start();
        settle();
        EXPECT_EQ(taken(), Log({"Preparing", "willStart"}) + kTornDown + Log({"Idle"})) << one.message;
        EXPECT_EQ(alerts.shown.front().buttons, QStringList({"Open System Settings", "Cancel"}));
        EXPECT_FALSE(alerts.shown.front().informativeText.isEmpty());
        EXPECT_EQ(alertShown(), one.message);
        EXPECT_EQ(std::exchange(workspace.settingsPanes, {}), std::vector<QString>({one.pane}));
        one.refuse(false);
    }
}

TEST_F(CoordinatorTest, FailuresOfTheStartArePresentedInTheirOwnWords)
{
    settings.setCaptureArea(CaptureArea::Window);
    settings.setWindowID(5);
    coordinator.start();
    settle();
    EXPECT_EQ(alertShown(), "Choose a window to record first.");
    settings.setCaptureArea(CaptureArea::FullScreen);
    takes.starting.error = std::make_exception_ptr(PlatformError("The X server has no Damage extension."));
    coordinator.start();
    settle();
    EXPECT_EQ(alertShown(), "The X server has no Damage extension.");
    EXPECT_EQ(coordinator.phase(), Phase::Idle);
    takes.starting.error = nullptr;
    startRecording();
}

TEST_F(CoordinatorTest, ATakeThatDiesEndsLikeAFinishedOne)
{
    QStringList reasons;
    coordinator.onTakeDied = [&](const QString &reason) { reasons << reason; };
    const auto lost = std::make_exception_ptr(PlatformError("lost"));
    takes.starting.held = true;
    coordinator.start();
    settle();
    takes.onError(lost);
    settle();
    EXPECT_EQ(coordinator.phase(), Phase::Preparing) << "too early to mean anything";
    takes.starting.release();
    settle();
    ASSERT_EQ(coordinator.phase(), Phase::Recording);
    const auto lateHandler = takes.onError;
    takes.onError(lost);
    settle();
    EXPECT_EQ(coordinator.phase(), Phase::Idle);
    EXPECT_TRUE(log.contains("finished take.mp4"));
    EXPECT_TRUE(alerts.shown.empty());
    EXPECT_EQ(reasons, QStringList({"lost", "lost"}));

    takes.starting.held = false;
    startRecording();
    lateHandler(lost);
    settle();
    EXPECT_EQ(coordinator.phase(), Phase::Recording) << "a message of the take before";
}

TEST_F(CoordinatorTest, AMissingFileIsAFailureAndAFailedMergeIsNone)
{
    takes.movie.reset();
    startRecording();
    coordinator.finish();
    settle();
    EXPECT_EQ(taken(), Log({"Processing", "take.stop"}) + kTornDown + Log({"Idle"}));
    EXPECT_EQ(alertShown(), "The recording couldn't be saved.");

    mergeFails = true;
    takes.movie = QUrl::fromLocalFile("/nowhere/two tracks.mp4");
    startRecording();
    coordinator.finish();
    settle();
    EXPECT_TRUE(log.contains("finished two tracks.mp4"));
    EXPECT_TRUE(alerts.shown.empty());
}

TEST_F(CoordinatorTest, HidesTheBubbleAndKeepsItOutOfTheNextTake)
{
    settings.setMode(RecordingMode::ScreenAndCamera);
    settle();
    content.content.windows = {
        {71, {}, "bubble", 4, true, WindowOwner{QCoreApplication::applicationPid(), "zivra"}},
        {72, {}, "sheet", 3, true, WindowOwner{QCoreApplication::applicationPid(), "zivra"}},
        {73, {}, "bar", 25, true, WindowOwner{QCoreApplication::applicationPid(), "zivra"}}};
    startRecording();
    EXPECT_EQ(takes.options.filter.windowIDs, std::vector<std::uint32_t>({73}));
    bubble.onClose();
    EXPECT_TRUE(coordinator.cameraHidden());
    coordinator.restart();
    settle();
    EXPECT_TRUE(coordinator.cameraHidden());
    EXPECT_FALSE(log.contains("bubble.show 1"));
    EXPECT_EQ(takes.options.filter.windowIDs, std::vector<std::uint32_t>({71, 73}));
    coordinator.toggleCamera();
    EXPECT_TRUE(taken().endsWith("bubble.show 1"));
    coordinator.finish();
    settle();
    EXPECT_FALSE(coordinator.cameraHidden());
}

TEST_F(CoordinatorTest, PreviewsTheCameraWhileIdleAndAskedTo)
{
    settings.setMode(RecordingMode::CameraOnly);
    settle();
    authorization.statuses[MediaType::Video] = AuthorizationStatus::NotDetermined;
    authorization.requesting.held = true;
    taken();
    coordinator.setPreviewing(true);
    EXPECT_EQ(taken(), Log({"bubble.hide", "camera.stop"})) << "not allowed yet";
    authorization.statuses[MediaType::Video] = AuthorizationStatus::Authorized;
    authorization.requesting.release();
    settle();
    EXPECT_EQ(taken(), Log({"camera.start none", "bubble.show 1 cameraOnly"}));

    bubble.onClose();
    EXPECT_EQ(settings.mode(), RecordingMode::ScreenOnly);
    EXPECT_EQ(taken(), Log()) << "the change is stored first";
    settle();
    EXPECT_EQ(taken(), Log({"bubble.hide", "camera.stop"}));
    bubble.onSize(BubbleSize::Large);
    EXPECT_EQ(settings.bubbleSize(), BubbleSize::Large);

    startRecording();
    coordinator.setPreviewing(false);
    settings.setQuality(VideoQuality::Low);
    settle();
    EXPECT_EQ(taken(), Log()) << "a recording is left alone";
}

} // namespace zivra::test
