#pragma once

#include "app/AppDelegate.h"
#include "support/fakes/Await.h"
#include "support/fakes/FakeCaptureStream.h"
#include "support/fakes/FakeDesktop.h"
#include "support/fakes/FakeDevices.h"
#include "support/fakes/FakeFileSystem.h"
#include "support/fakes/FakeMovieServices.h"
#include "support/fakes/FakeUserDefaults.h"

#include <QCoroFuture>
#include <QStringList>

namespace zivra::test {

/// What was done, in order, by all the fakes of a test.
using Log = QStringList;

struct Logging {
    explicit Logging(Log &entries) : log(entries) {}
    Log &log;
};

struct FakeCamera final : CameraManager, Logging {
    using Logging::Logging;
    void start(const std::optional<CaptureDevice> &device, VideoQuality) override
    {
        log << "camera.start " + (device ? device->uniqueID : QString("none"));
    }
    void stop() override { log << "camera.stop"; }
    void startMovie(const std::optional<CaptureDevice> &microphone, const QUrl &url) override
    {
        log << "camera.startMovie " + microphone.value().uniqueID + url.fileName().right(4);
    }
    void pauseMovie() override { log << "camera.pauseMovie"; }
    void resumeMovie() override { log << "camera.resumeMovie"; }
    QCoro::Task<std::optional<QUrl>> stopMovie() override
    {
        log << "camera.stopMovie";
        co_return QUrl::fromLocalFile("/nowhere/camera.mov");
    }
    PicturePreview &preview() override { return noPicture; }

    NoPicture noPicture;
};

struct FakeBubble final : CameraBubbleController, Logging {
    using Logging::Logging;
    void show(CameraManager &, const Screen &screen, bool cameraOnly, BubbleSize, bool) override
    {
        log << QString("bubble.show %1%2").arg(screen.displayID).arg(cameraOnly ? " cameraOnly" : "");
    }
    void hide() override { log << "bubble.hide"; }
    void resize(BubbleSize) override { log << "bubble.resize"; }
    std::optional<std::uint32_t> panelWindowID() const override { return 71; }
};

struct FakeDrawing final : DrawingOverlayController, Logging {
    using Logging::Logging;
    void show(const Screen &) override { log << "drawing.show"; }
    void hide() override { log << "drawing.hide"; }
    void clearStrokes() override { log << "drawing.clear"; }
    std::optional<std::uint32_t> panelWindowID() const override { return 72; }
};

struct FakeControlBar final : ControlBarController, Logging {
    using Logging::Logging;
    void show(const Screen &, RecordingControls &) override { log << "bar.show"; }
    void orderOut() override { log << "bar.orderOut"; }
};

struct FakeCountdown final : CountdownController, Logging {
    using Logging::Logging;
    QCoro::Task<bool> run(Screen, int seconds) override
    {
        log << QString("countdown %1").arg(seconds);
        const bool answer = co_await counting.answer(goOn);
        co_return answer;
    }
    bool goOn = true;
    ScriptedResult<bool> counting;
};

struct FakeAreaSelector final : AreaSelector, Logging {
    using Logging::Logging;
    QCoro::Task<std::optional<QRectF>> select(Screen screen) override
    {
        log << QString("area.select %1").arg(screen.displayID);
        co_return area;
    }
    std::optional<QRectF> area;
};

/// What the takes of a coordinator are given and do.
struct TakeScript {
    ScreenRecorderOptions options;
    std::function<void(std::exception_ptr)> onError;
    ScriptedResult<void> starting;
    std::optional<QUrl> movie = QUrl::fromLocalFile("/nowhere/take.mp4");
};

struct FakeTake final : ScreenTake, Logging {
    FakeTake(Log &entries, TakeScript &take) : Logging(entries), script(take) {}
    void setErrorHandler(std::function<void(std::exception_ptr)> handler) override
    {
        script.onError = std::move(handler);
    }
    QCoro::Task<> start() override
    {
        log << "take.start";
        co_await script.starting.answer();
    }
    void pause() override { log << "take.pause"; }
    void resume() override { log << "take.resume"; }
    QCoro::Task<std::optional<QUrl>> stop() override
    {
        log << "take.stop";
        co_return script.movie;
    }
    TakeScript &script;
};

/// Everything around a coordinator, writing to one log. Nothing is refused; there is one screen, number 1.
struct FakeWorld {
    Log taken() { return std::exchange(log, {}); }

    Log log;
    FakeUserDefaults defaults;
    FakeClock clock;
    FakeScreens screens;
    FakeContentQuery content;
    FakeScreenCaptureAccess screenAccess;
    FakeAuthorization authorization;
    FakeDeviceCatalog catalog;
    FakeCaptureStreams streams;
    FakeMovieServices movies;
    ManualQueueFactory queues;
    FakeFileSystem files;
    FakeAlerts alerts;
    FakeWorkspace workspace;
    Platform platform{defaults, clock,  screens, content, screenAccess, authorization, catalog,
                      streams,  movies, queues,  files,   alerts,       workspace};
    FakeCamera camera{log};
    FakeBubble bubble{log};
    FakeDrawing drawing{log};
    FakeControlBar controlBar{log};
    FakeCountdown countdown{log};
    FakeAreaSelector areaSelector{log};
    RecordingSurfaces surfaces{camera, bubble, drawing, controlBar, countdown, areaSelector};
};

} // namespace zivra::test
