#include "overlays/ControlBarModel.h"
#include "overlays/Countdown.h"
#include "support/fakes/FakeDesktop.h"

#include <gtest/gtest.h>

#include <map>

namespace zivra::test {
namespace {

struct FakeControls final : RecordingControls {
    Phase phase() const override { return now; }
    double elapsed() const override { return seconds; }
    bool cameraHidden() const override { return false; }
    RecordingMode mode() const override { return chosen; }
    std::optional<Shortcut> shortcut(ShortcutAction action) const override { return shortcuts.at(action); }
    void start() override {}
    void togglePause() override {}
    void finish() override {}
    void restart() override {}
    void cancel() override {}
    void toggleCamera() override {}

    Phase now = Phase::Recording;
    double seconds = 0;
    RecordingMode chosen = RecordingMode::ScreenOnly;
    std::map<ShortcutAction, std::optional<Shortcut>> shortcuts = [] {
        std::map<ShortcutAction, std::optional<Shortcut>> all;
        for (const ShortcutAction action : kAllShortcutActions) {
            all.emplace(action, defaultShortcut(action));
        }
        return all;
    }();
};

TEST(ControlBar, TellsTheKeysTheTimeAndWhatTheModeOffers)
{
    FakeClock clock;
    DrawingModel drawing(clock);
    FakeControls controls;
    ControlBarModel model(controls, drawing);
    int ticks = 0;
    QObject::connect(&model, &ControlBarModel::timeChanged, [&ticks] { ++ticks; });
    EXPECT_EQ(model.finishHelp(), "Finish Recording (⌥⇧L)");
    EXPECT_EQ(model.pauseHelp(), "Pause (⌥⇧P)");
    controls.now = RecordingControls::Phase::Paused;
    EXPECT_EQ(model.pauseHelp(), "Resume Recording (⌥⇧P)");
    controls.shortcuts[ShortcutAction::Cancel].reset();
    EXPECT_EQ(model.cancelHelp(), "Cancel");
    controls.shortcuts[ShortcutAction::Restart] = Shortcut();
    EXPECT_EQ(model.restartHelp(), "Restart") << "a shortcut that has nothing to show";
    for (const double seconds : {0.25, 0.75, 1.0, 1.25, 3601.0}) {
        controls.seconds = seconds;
        Q_EMIT controls.elapsedChanged();
    }
    EXPECT_EQ(model.time(), "1:00:01");
    EXPECT_EQ(ticks, 2) << "only when it reads differently";
    EXPECT_TRUE(model.offersDrawing() && !model.offersCamera());
    controls.chosen = RecordingMode::CameraOnly;
    EXPECT_FALSE(model.offersDrawing() || model.offersCamera());
}

TEST(Countdown, CountsToOneAndAnswersOnce)
{
    CountdownModel model(2);
    QList<bool> answers;
    model.onDone = [&answers](bool goOn) { answers << goOn; };
    model.startTicking();
    model.tick();
    EXPECT_EQ(model.value(), 1);
    EXPECT_TRUE(answers.isEmpty());
    model.tick();
    model.complete(false);
    EXPECT_EQ(answers, QList<bool>{true});
    EXPECT_EQ(model.value(), 1) << "zero is never shown";
}

} // namespace
} // namespace zivra::test
