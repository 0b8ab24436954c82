#include "app/FakeSurfaces.h"
#include "app/RecordingCoordinator.h"
#include "platform/PlatformError.h"

#include <QCoreApplication>
#include <QFile>
#include <QMetaEnum>

#include <gtest/gtest.h>

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
        afterwards();
    }

    RecordingCoordinator::Collaborators collaborators()
    {
        auto all = coordinatorCollaborators(platform, settings, devices, library, permissions, surfaces);
        all.makeTake = [this](const ScreenRecorderOptions &options) {
            take.options = options;
            return std::make_unique<FakeTake>(log, take);
        };
        all.mergeAudioTracksIfNeeded = [this](const QUrl &) -> QCoro::Task<> {
            log << "merge";
            if (mergeFails) {
                throw PlatformError("no space");
            }
            co_return;
        };
        return all;
    }

    /// What has been done since the last call once everything has settled.
    Log afterwards()
    {
        settle();
        return taken();
    }
    /// Does these, separated by spaces, in one turn of the event loop. What comes of it.
    Log run(const QString &actions)
    {
        const std::map<QString, std::function<void()>> all{
            {"start", [this] { coordinator.start(); }},
            {"finish", [this] { coordinator.finish(); }},
            {"restart", [this] { coordinator.restart(); }},
            {"cancel", [this] { coordinator.cancel(); }},
            {"pause", [this] { coordinator.pause(); }},
            {"resume", [this] { coordinator.resume(); }},
            {"togglePause", [this] { coordinator.togglePause(); }},
            {"toggleCamera", [this] { coordinator.toggleCamera(); }}};
        for (const QString &action : actions.split(' ')) {
            all.at(action)();
        }
        return afterwards();
    }
    /// The message of the only alert that was shown since the last call.
    QString alertShown()
    {
        const auto shown = std::exchange(alerts.shown, {});
        return shown.size() == 1 ? shown.front().message : QString("%1 alerts").arg(shown.size());
    }

    TakeScript take;
    bool mergeFails = false;
    Settings settings{defaults};
    Devices devices{catalog};
    Library library{files, movies};
    Permissions permissions{authorization, workspace};
    RecordingCoordinator coordinator{collaborators()};
};

const Log kStarted{"Preparing",    "willStart",  "bubble.hide", "bar.show",
                   "drawing.show", "take.start", "Recording"};
const Log kTornDown{"bar.orderOut", "drawing.hide", "bubble.hide", "camera.stop"};
const Log kDiscarded = Log({"Processing", "take.stop"}) + kTornDown + Log("Idle");
const Log kFinished =
    Log({"Processing", "take.stop"}) + kTornDown + Log({"merge", "finished take.mp4", "Idle"});
const Log kRestarting{"Processing", "take.stop", "drawing.clear", "Preparing", "willStart", "bubble.hide"};

} // namespace

TEST_F(CoordinatorTest, ReactsInEachPhaseToWhatMakesSenseThere)
{
    const QString pauseControls = "pause resume togglePause";
    EXPECT_EQ(run("finish restart cancel " + pauseControls), Log()) << "idle";

    settings.setCountdown(true);
    countdown.counting.held = true;
    afterwards();
    EXPECT_EQ(run("start start"), Log({"Preparing", "willStart", "bubble.hide", "Countdown", "countdown 3"}));
    EXPECT_EQ(run("start finish restart cancel " + pauseControls), Log()) << "counting down";
    take.starting.held = true;
    countdown.counting.release();
    EXPECT_EQ(afterwards(), Log({"bar.show", "drawing.show", "take.start"}));
    EXPECT_EQ(run("start finish restart cancel " + pauseControls), Log()) << "starting";
    take.starting.release();
    EXPECT_EQ(afterwards(), Log("Recording"));

    EXPECT_EQ(run("start resume"), Log()) << "recording";
    EXPECT_EQ(run("pause pause start"), Log({"take.pause", "Paused"}));
    EXPECT_EQ(run("togglePause togglePause"), Log({"take.resume", "Recording", "take.pause", "Paused"}));
    EXPECT_EQ(run("finish finish start restart cancel"), kFinished) << "also from a pause";
    EXPECT_TRUE(alerts.shown.empty());
}

TEST_F(CoordinatorTest, RunsAScreenTakeInOrder)
{
    coordinator.start();
    EXPECT_EQ(coordinator.phase(), Phase::Idle) << "the phase changes one turn later";
    EXPECT_EQ(afterwards(), kStarted);
    EXPECT_EQ(take.options.outputSize, QSizeF(1920, 1080));
    EXPECT_FALSE(take.options.sourceRect || take.options.microphoneID);
    EXPECT_TRUE(take.options.outputURL.fileName().endsWith(".mp4"));
    EXPECT_EQ(run("finish"), kFinished);
}

TEST_F(CoordinatorTest, ShowsTheCameraAndCountsDownBeforeTheBarAppears)
{
    settings.setMode(RecordingMode::ScreenAndCamera);
    settings.setCountdown(true);
    settings.setMicEnabled(true);
    settings.setCameraID("gone");
    settings.setMicID("mic.2");
    catalog.cameras = {{"cam.1", "One"}, {"cam.2", "Two"}};
    catalog.microphones = {{"mic.1", "One"}, {"mic.2", "Two"}};
    devices.refresh();
    afterwards();
    EXPECT_EQ(run("start"), Log({"Preparing", "willStart", "camera.start cam.1", "bubble.show 1", "Countdown",
                                 "countdown 3", "bar.show", "drawing.show", "take.start", "Recording"}));
    EXPECT_EQ(take.options.microphoneID, "mic.2");
}

TEST_F(CoordinatorTest, EndsSilentlyWhenTheCountdownIsCalledOff)
{
    settings.setCountdown(true);
    countdown.goOn = false;
    afterwards();
    EXPECT_EQ(run("start").mid(5), kTornDown + Log("Idle"));
    EXPECT_TRUE(alerts.shown.empty());
}

TEST_F(CoordinatorTest, RecordsTheCameraAlone)
{
    settings.setMode(RecordingMode::CameraOnly);
    settings.setMicEnabled(true);
    catalog.microphones = {{"mic.1", "One"}};
    devices.refresh();
    screenAccess.granted = false;
    afterwards();
    EXPECT_EQ(run("start"), Log({"Preparing", "willStart", "camera.start none", "bubble.show 1 cameraOnly",
                                 "bar.show", "camera.startMovie mic.1.mov", "Recording"}));
    EXPECT_EQ(run("toggleCamera"), Log());
    EXPECT_EQ(run("togglePause togglePause finish"), Log({"camera.pauseMovie", "Paused", "camera.resumeMovie",
                                                          "Recording", "Processing", "camera.stopMovie"}) +
                                                         kTornDown +
                                                         Log({"merge", "finished camera.mov", "Idle"}));
}

TEST_F(CoordinatorTest, CountsRecordedTimeWithoutPauses)
{
    run("start");
    for (const int milliseconds : {10'000, 5000, 2000}) {
        clock.advance(milliseconds);
        run("pause pause");
        clock.advance(100'000);
        run("resume resume");
    }
    settleUntil([this] { return coordinator.elapsed() > 0; });
    EXPECT_DOUBLE_EQ(coordinator.elapsed(), 17);
}

TEST_F(CoordinatorTest, RestartKeepsPlanAndOverlaysAndDropsTheFile)
{
    take.movie = files.addFile("take.mp4");
    settings.setCaptureArea(CaptureArea::CustomArea);
    areaSelector.area = QRectF(10, 20, 300, 200);
    EXPECT_TRUE(run("start").contains("area.select 1"));
    countdown.counting.held = true;
    settings.setCountdown(true);
    EXPECT_EQ(run("restart restart"), kRestarting + Log({"Countdown", "countdown 3"}))
        << "the area is not chosen again";
    EXPECT_FALSE(QFile::exists(take.movie->toLocalFile()));
    countdown.counting.release();
    EXPECT_EQ(afterwards(), Log({"bar.show", "drawing.show", "take.start", "Recording"}));
    EXPECT_EQ(take.options.sourceRect, areaSelector.area);
    EXPECT_EQ(take.options.outputSize, QSizeF(300, 200));
}

TEST_F(CoordinatorTest, RestartOnADisplayThatIsGoneTearsDown)
{
    run("start");
    content.content.displays.clear();
    EXPECT_EQ(run("restart"), kRestarting + Log({"bar.show", "drawing.show"}) + kTornDown + Log("Idle"));
    EXPECT_EQ(alertShown(), "Couldn't find the display to record.");
}

TEST_F(CoordinatorTest, CancelAsksFirst)
{
    take.movie = files.addFile("take.mp4");
    run("start");
    alerts.answer.button = 1;
    EXPECT_EQ(run("cancel"), Log({"take.pause", "Paused", "take.resume", "Recording"}));
    EXPECT_EQ(alerts.shown.front().informativeText, "The recording will be discarded. This can't be undone.");
    EXPECT_EQ(alerts.shown.front().buttons, QStringList({"Delete", "Keep Recording"}));
    EXPECT_EQ(alertShown(), "Delete this recording?");
    run("pause");
    EXPECT_EQ(run("cancel"), Log()) << "a paused recording stays paused";
    alerts.answer.button = 0;
    EXPECT_EQ(run("cancel"), kDiscarded);
    EXPECT_FALSE(QFile::exists(take.movie->toLocalFile()));
}

TEST_F(CoordinatorTest, AnAnswerThatComesTooLateDiscardsNothing)
{
    run("start");
    alerts.answering.held = true;
    run("cancel cancel");
    EXPECT_EQ(alertShown(), "Delete this recording?") << "asked once";
    run("finish");
    run("start");
    alerts.answering.release();
    EXPECT_EQ(afterwards(), Log()) << "the question was about another take";
    EXPECT_EQ(coordinator.phase(), Phase::Recording);
}

TEST_F(CoordinatorTest, RefusedPermissionsAreExplainedAndLeadToTheSettings)
{
    settings.setMode(RecordingMode::ScreenAndCamera);
    settings.setMicEnabled(true);
    afterwards();
    alerts.answer.button = 0;
    authorization.statuses = {{MediaType::Video, AuthorizationStatus::Denied},
                              {MediaType::Audio, AuthorizationStatus::Denied}};
    screenAccess.granted = false;
    for (const QString permission : {"Camera", "Microphone", "Screen Recording"}) {
        EXPECT_EQ(run("start"), Log({"Preparing", "willStart"}) + kTornDown + Log("Idle"));
        EXPECT_EQ(alerts.shown.front().buttons, QStringList({"Open System Settings", "Cancel"}));
        EXPECT_FALSE(alerts.shown.front().informativeText.isEmpty());
        EXPECT_EQ(alertShown(), "Zivra needs " + permission + " permission.");
        authorization.statuses.erase(permission == "Camera" ? MediaType::Video : MediaType::Audio);
    }
    EXPECT_EQ(workspace.settingsPanes,
              std::vector<QString>({"Privacy_Camera", "Privacy_Microphone", "Privacy_ScreenCapture"}));
}

TEST_F(CoordinatorTest, FailuresOfTheStartArePresentedInTheirOwnWords)
{
    settings.setCaptureArea(CaptureArea::Window);
    settings.setWindowID(5);
    run("start");
    EXPECT_EQ(alertShown(), "Choose a window to record first.");
    settings.setCaptureArea(CaptureArea::FullScreen);
    take.starting.error = std::make_exception_ptr(PlatformError("The X server has no Damage extension."));
    run("start");
    EXPECT_EQ(alertShown(), "The X server has no Damage extension.");
    take.starting.error = nullptr;
    EXPECT_EQ(run("start"), kStarted);
}

TEST_F(CoordinatorTest, ATakeThatDiesEndsLikeAFinishedOne)
{
    QStringList reasons;
    coordinator.onTakeDied = [&](const QString &reason) { reasons << reason; };
    const auto lost = std::make_exception_ptr(PlatformError("lost"));
    take.starting.held = true;
    run("start");
    take.onError(lost);
    EXPECT_EQ(afterwards(), Log()) << "too early to mean anything";
    take.starting.release();
    EXPECT_EQ(afterwards(), Log("Recording"));
    const auto lateHandler = take.onError;
    take.onError(lost);
    EXPECT_EQ(afterwards(), kFinished);
    EXPECT_TRUE(alerts.shown.empty());
    EXPECT_EQ(reasons, QStringList({"lost", "lost"}));

    take.starting.held = false;
    run("start");
    lateHandler(lost);
    EXPECT_EQ(afterwards(), Log()) << "a message of the take before";
}

TEST_F(CoordinatorTest, AMissingFileIsAFailureAndAFailedMergeIsNone)
{
    const auto movie = std::exchange(take.movie, std::nullopt);
    run("start");
    EXPECT_EQ(run("finish"), kDiscarded);
    EXPECT_EQ(alertShown(), "The recording couldn't be saved.");

    mergeFails = true;
    take.movie = movie;
    run("start");
    EXPECT_EQ(run("finish"), kFinished);
    EXPECT_TRUE(alerts.shown.empty());
}

TEST_F(CoordinatorTest, HidesTheBubbleAndKeepsItOutOfTheNextTake)
{
    settings.setMode(RecordingMode::ScreenAndCamera);
    const WindowOwner self{QCoreApplication::applicationPid(), "zivra"};
    content.content.windows = {
        {71, {}, "bubble", 4, true, self}, {72, {}, "sheet", 3, true, self}, {73, {}, "bar", 25, true, self}};
    run("start");
    EXPECT_EQ(take.options.filter.windowIDs, std::vector<std::uint32_t>({73}));
    bubble.onClose();
    EXPECT_FALSE(run("restart").contains("bubble.show 1"));
    EXPECT_TRUE(coordinator.cameraHidden());
    EXPECT_EQ(take.options.filter.windowIDs, std::vector<std::uint32_t>({71, 73}));
    EXPECT_TRUE(run("toggleCamera").endsWith("bubble.show 1"));
    run("toggleCamera finish");
    EXPECT_FALSE(coordinator.cameraHidden());
}

TEST_F(CoordinatorTest, PreviewsTheCameraWhileIdleAndAskedTo)
{
    settings.setMode(RecordingMode::CameraOnly);
    afterwards();
    authorization.statuses[MediaType::Video] = AuthorizationStatus::NotDetermined;
    authorization.requesting.held = true;
    coordinator.setPreviewing(true);
    EXPECT_EQ(taken(), Log({"bubble.hide", "camera.stop"})) << "not allowed yet";
    authorization.statuses[MediaType::Video] = AuthorizationStatus::Authorized;
    authorization.requesting.release();
    EXPECT_EQ(afterwards(), Log({"camera.start none", "bubble.show 1 cameraOnly"}));

    bubble.onClose();
    EXPECT_EQ(settings.mode(), RecordingMode::ScreenOnly);
    EXPECT_EQ(taken(), Log()) << "the change is stored first";
    EXPECT_EQ(afterwards(), Log({"bubble.hide", "camera.stop"}));
    bubble.onSize(BubbleSize::Large);
    EXPECT_EQ(settings.bubbleSize(), BubbleSize::Large);

    run("start");
    coordinator.setPreviewing(false);
    settings.setQuality(VideoQuality::Low);
    EXPECT_EQ(afterwards(), Log()) << "a recording is left alone";
}

} // namespace zivra::test
