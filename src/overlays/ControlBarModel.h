#pragma once

#include "overlays/DrawingModel.h"
#include "overlays/RecordingControls.h"

#include <QObject>
#include <QString>

namespace zivra {

/// What the control bar shows of a recording and of the drawing, and what its buttons do. It holds no state
/// of its own. Main thread only.
class ControlBarModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isRecording READ isRecording NOTIFY changed)
    Q_PROPERTY(bool isPaused READ isPaused NOTIFY changed)
    Q_PROPERTY(QString time READ time NOTIFY timeChanged)
    Q_PROPERTY(bool offersDrawing READ offersDrawing NOTIFY changed)
    Q_PROPERTY(bool offersCamera READ offersCamera NOTIFY changed)
    Q_PROPERTY(bool cameraHidden READ cameraHidden NOTIFY changed)
    Q_PROPERTY(QString finishHelp READ finishHelp NOTIFY changed)
    Q_PROPERTY(QString pauseHelp READ pauseHelp NOTIFY changed)
    Q_PROPERTY(QString restartHelp READ restartHelp NOTIFY changed)
    Q_PROPERTY(QString cancelHelp READ cancelHelp NOTIFY changed)
    Q_PROPERTY(zivra::DrawingModel *drawing READ drawing CONSTANT)

public:
    /// Both outlive the model.
    ControlBarModel(RecordingControls &controls, DrawingModel &drawing);

    [[nodiscard]] bool isRecording() const { return m_controls.isRecording(); }
    [[nodiscard]] bool isPaused() const { return m_controls.phase() == RecordingControls::Phase::Paused; }
    [[nodiscard]] const QString &time() const { return m_time; }
    [[nodiscard]] bool offersDrawing() const { return m_controls.mode() != RecordingMode::CameraOnly; }
    [[nodiscard]] bool offersCamera() const { return m_controls.mode() == RecordingMode::ScreenAndCamera; }
    [[nodiscard]] bool cameraHidden() const { return m_controls.cameraHidden(); }
    [[nodiscard]] QString finishHelp() const;
    [[nodiscard]] QString pauseHelp() const;
    [[nodiscard]] QString restartHelp() const;
    [[nodiscard]] QString cancelHelp() const;
    [[nodiscard]] DrawingModel *drawing() { return &m_drawing; }

    Q_INVOKABLE void finish() { m_controls.finish(); }
    Q_INVOKABLE void togglePause() { m_controls.togglePause(); }
    Q_INVOKABLE void restart() { m_controls.restart(); }
    Q_INVOKABLE void cancel() { m_controls.cancel(); }
    Q_INVOKABLE void toggleCamera() { m_controls.toggleCamera(); }

Q_SIGNALS:
    void changed();
    void timeChanged();

private:
    [[nodiscard]] QString tip(const QString &title, ShortcutAction action) const;
    void readTime();

    RecordingControls &m_controls;
    DrawingModel &m_drawing;
    QString m_time; ///< changes once a second, the elapsed time more often
};

} // namespace zivra
