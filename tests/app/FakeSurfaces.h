#pragma once

#include "app/AppDelegate.h"
#include "support/fakes/Await.h"
#include "support/fakes/FakeDesktop.h"
#include "support/fakes/FakeDevices.h"
#include "support/fakes/FakeFileSystem.h"
#include "support/fakes/FakeMovieServices.h"
#include "support/fakes/FakeUserDefaults.h"
#include "support/fakes/ScriptedResult.h"

#include <QCoroFuture>
#include <QStringList>

#include <memory>
#include <optional>

namespace zivra::test {

/// What was done, in order, by all the fakes of a test.
using Log = QStringList;

struct FakeCamera final : CameraManager {
    explicit FakeCamera(Log &entries) : log(entries) {}
    void start(const std::optional<CaptureDevice> &device, VideoQuality) override
    {
        log << "camera.start " + (device ? device->uniqueID : QString("none"));
    }
    void stop() override { log << "camera.stop"; }
    void startMovie(const std::optional<CaptureDevice> &microphone, const QUrl &url) override
    {
        log << "camera.startMovie " + (microphone ? microphone->uniqueID : QString("none")) + " " +
                   url.fileName().section('.', -1);
    }
    void pauseMovie() override { log << "camera.pauseMovie"; }
    void resumeMovie() override { log << "camera.resumeMovie"; }
    QCoro::Task<std::optional<QUrl>> stopMovie() override
    {
        log << "camera.stopMovie";
        co_return movie;
    }
    Log &log;
    std::optional<QUrl> movie;
};

struct FakeBubble final : CameraBubbleController {
    explicit FakeBubble(Log &entries) : log(entries) {}
    void show(CameraManager &, const Screen &screen, bool cameraOnly, BubbleSize, bool) override
    {
        log << QString("bubble.show %1%2").arg(screen.displayID).arg(cameraOnly ? " cameraOnly" : "");
        panel = 71;
    }
    void hide() override { log << "bubble.hide"; }
    void resize(BubbleSize) override { log << "bubble.resize"; }
    std::optional<std::uint32_t> panelWindowID() const override { return panel; }
    Log &log;
    std::optional<std::uint32_t> panel;
};

struct FakeDrawing final : DrawingOverlayController {
    explicit FakeDrawing(Log &entries) : log(entries) {}
    void show(const Screen &) override { log << "drawing.show"; }
    void hide() override { log << "drawing.hide"; }
    void clearStrokes() override { log << "drawing.clear"; }
    std::optional<std::uint32_t> panelWindowID() const override { return 72; }
    Log &log;
};

struct FakeControlBar final : ControlBarController {
    explicit FakeControlBar(Log &entries) : log(entries) {}
    void show(const Screen &, RecordingControls &) override { log << "bar.show"; }
    void orderOut() override { log << "bar.orderOut"; }
    Log &log;
};

struct FakeCountdown final : CountdownController {
    explicit FakeCountdown(Log &entries) : log(entries) {}
    QCoro::Task<bool> run(Screen, int seconds) override
    {
        log << QString("countdown %1").arg(seconds);
        const bool answer = co_await counting.answer(goOn);
        co_return answer;
    }
    Log &log;
    bool goOn = true;
    ScriptedResult<bool> counting;
};

struct FakeAreaSelector final : AreaSelector {
    QCoro::Task<std::optional<QRectF>> select(Screen screen) override
    {
        askedFor = screen.displayID;
        co_return area;
    }
    std::uint32_t askedFor = 0;
    std::optional<QRectF> area;
};

/// The takes that a coordinator makes, one after the other.
struct FakeTakes {
    explicit FakeTakes(Log &entries) : log(entries) {}

    std::unique_ptr<ScreenTake> make(const ScreenRecorderOptions &given);

    Log &log;
    ScreenRecorderOptions options;
    std::function<void(std::exception_ptr)> onError;
    ScriptedResult<void> starting;
    std::optional<QUrl> movie = QUrl::fromLocalFile("/nowhere/take.mp4");
};

class FakeTake final : public ScreenTake {
public:
    explicit FakeTake(FakeTakes &takes) : m_takes(takes) {}
    void setErrorHandler(std::function<void(std::exception_ptr)> handler) override
    {
        m_takes.onError = std::move(handler);
    }
    QCoro::Task<> start() override
    {
        m_takes.log << "take.start";
        co_await m_takes.starting.answer();
    }
    void pause() override { m_takes.log << "take.pause"; }
    void resume() override { m_takes.log << "take.resume"; }
    QCoro::Task<std::optional<QUrl>> stop() override
    {
        m_takes.log << "take.stop";
        co_return m_takes.movie;
    }

private:
    FakeTakes &m_takes;
};

inline std::unique_ptr<ScreenTake> FakeTakes::make(const ScreenRecorderOptions &given)
{
    options = given;
    return std::make_unique<FakeTake>(*this);
}

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
    FakeAlerts alerts;
    FakeWorkspace workspace;
    FakeMovieServices movies;
    FakeFileSystem files;
    FakeCamera camera{log};
    FakeBubble bubble{log};
    FakeDrawing drawing{log};
    FakeControlBar controlBar{log};
    FakeCountdown countdown{log};
    FakeAreaSelector areaSelector;
};

} // namespace zivra::test
