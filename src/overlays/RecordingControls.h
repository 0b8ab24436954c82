#pragma once

#include "settings/RecordingChoices.h"
#include "settings/Shortcut.h"

#include <QObject>

#include <optional>

namespace zivra {

/// What a view may see of a recording and ask of it. Main thread only.
class RecordingControls : public QObject {
    Q_OBJECT
    Q_PROPERTY(zivra::RecordingControls::Phase phase READ phase NOTIFY phaseChanged)
    Q_PROPERTY(double elapsed READ elapsed NOTIFY elapsedChanged)
    Q_PROPERTY(bool cameraHidden READ cameraHidden NOTIFY cameraHiddenChanged)

public:
    /// Where the recording stands.
    enum class Phase { Idle, Preparing, Countdown, Recording, Paused, Processing };
    Q_ENUM(Phase)

    using QObject::QObject;

    [[nodiscard]] virtual Phase phase() const = 0;
    /// Recorded time in seconds, without pauses.
    [[nodiscard]] virtual double elapsed() const = 0;
    /// The user has hidden the camera bubble during this recording.
    [[nodiscard]] virtual bool cameraHidden() const = 0;
    /// The mode of the current recording, which the setting may have left since.
    [[nodiscard]] virtual RecordingMode mode() const = 0;

    /// The keys that do the same as the operation below; absent when the user has cleared them.
    [[nodiscard]] virtual std::optional<Shortcut> shortcut(ShortcutAction action) const = 0;

    /// Something is being recorded or would be if it were not paused.
    [[nodiscard]] bool isRecording() const { return phase() == Phase::Recording || phase() == Phase::Paused; }

    /// Each does nothing in a phase it does not belong to.
    virtual void start() = 0;
    virtual void togglePause() = 0;
    virtual void finish() = 0;
    virtual void restart() = 0;
    /// Asks the user before it discards anything.
    virtual void cancel() = 0;
    virtual void toggleCamera() = 0;

Q_SIGNALS:
    /// Each is emitted after every assignment, also of an equal value.
    void phaseChanged();
    void elapsedChanged();
    void cameraHiddenChanged();
    void modeChanged();
    void shortcutsChanged();
};

} // namespace zivra
