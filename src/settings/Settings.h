#pragma once

#include "platform/UserDefaults.h"
#include "settings/RecordingChoices.h"
#include "settings/Shortcut.h"
#include "settings/ShortcutStorage.h"

#include <QObject>
#include <QString>

#include <optional>

namespace zivra {

/// The user's recording preferences, read from the store at construction and written back one by one,
/// the moment each is set. Main thread only.
///
/// A stored value of the wrong type counts as missing, for its key alone, and stays in the store until that
/// property is set. Setting a property emits `willChange()`, stores and writes the value, then emits the
/// property's own signal if the value differs from the one before.
class Settings : public QObject {
    Q_OBJECT
    Q_PROPERTY(zivra::RecordingMode mode READ mode WRITE setMode NOTIFY modeChanged)
    Q_PROPERTY(zivra::CaptureArea captureArea READ captureArea WRITE setCaptureArea NOTIFY captureAreaChanged)
    Q_PROPERTY(quint32 displayID READ displayID WRITE setDisplayID NOTIFY displayIDChanged)
    Q_PROPERTY(quint32 windowID READ windowID WRITE setWindowID NOTIFY windowIDChanged)
    Q_PROPERTY(QString windowTitle READ windowTitle WRITE setWindowTitle NOTIFY windowTitleChanged)
    Q_PROPERTY(QString cameraID READ cameraID WRITE setCameraID NOTIFY cameraIDChanged)
    Q_PROPERTY(QString micID READ micID WRITE setMicID NOTIFY micIDChanged)
    Q_PROPERTY(bool cameraEnabled READ cameraEnabled WRITE setCameraEnabled NOTIFY cameraEnabledChanged)
    Q_PROPERTY(bool micEnabled READ micEnabled WRITE setMicEnabled NOTIFY micEnabledChanged)
    Q_PROPERTY(bool systemAudio READ systemAudio WRITE setSystemAudio NOTIFY systemAudioChanged)
    Q_PROPERTY(zivra::VideoQuality quality READ quality WRITE setQuality NOTIFY qualityChanged)
    Q_PROPERTY(bool countdown READ countdown WRITE setCountdown NOTIFY countdownChanged)
    Q_PROPERTY(
        bool highlightClicks READ highlightClicks WRITE setHighlightClicks NOTIFY highlightClicksChanged)
    Q_PROPERTY(bool mirrorCamera READ mirrorCamera WRITE setMirrorCamera NOTIFY mirrorCameraChanged)
    Q_PROPERTY(zivra::BubbleSize bubbleSize READ bubbleSize WRITE setBubbleSize NOTIFY bubbleSizeChanged)
    Q_PROPERTY(
        int countdownSeconds READ countdownSeconds WRITE setCountdownSeconds NOTIFY countdownSecondsChanged)
    Q_PROPERTY(bool showPanelOnLaunch READ showPanelOnLaunch WRITE setShowPanelOnLaunch NOTIFY
                   showPanelOnLaunchChanged)
    Q_PROPERTY(bool openLibraryAfterRecording READ openLibraryAfterRecording WRITE
                   setOpenLibraryAfterRecording NOTIFY openLibraryAfterRecordingChanged)

public:
    /// `defaults` must outlive the object.
    explicit Settings(UserDefaults &defaults, QObject *parent = nullptr);

    [[nodiscard]] RecordingMode mode() const { return m_mode; }
    void setMode(RecordingMode mode);
    [[nodiscard]] CaptureArea captureArea() const { return m_captureArea; }
    void setCaptureArea(CaptureArea area);
    /// The chosen display's number, 0 when none was chosen.
    [[nodiscard]] quint32 displayID() const { return m_displayID; }
    void setDisplayID(quint32 displayID);
    /// The window picked in the recorder panel, 0 for none. For this run only, never stored.
    [[nodiscard]] quint32 windowID() const { return m_windowID; }
    void setWindowID(quint32 windowID);
    [[nodiscard]] const QString &windowTitle() const { return m_windowTitle; }
    void setWindowTitle(const QString &title);
    /// `CaptureDevice::uniqueID`, empty when none was chosen.
    [[nodiscard]] const QString &cameraID() const { return m_cameraID; }
    void setCameraID(const QString &uniqueID);
    /// `CaptureDevice::uniqueID`, empty when none was chosen.
    [[nodiscard]] const QString &micID() const { return m_micID; }
    void setMicID(const QString &uniqueID);
    [[nodiscard]] bool cameraEnabled() const { return m_cameraEnabled; }
    void setCameraEnabled(bool enabled);
    [[nodiscard]] bool micEnabled() const { return m_micEnabled; }
    void setMicEnabled(bool enabled);
    [[nodiscard]] bool systemAudio() const { return m_systemAudio; }
    void setSystemAudio(bool recorded);
    [[nodiscard]] VideoQuality quality() const { return m_quality; }
    void setQuality(VideoQuality quality);
    [[nodiscard]] bool countdown() const { return m_countdown; }
    void setCountdown(bool shown);
    [[nodiscard]] bool highlightClicks() const { return m_highlightClicks; }
    void setHighlightClicks(bool highlighted);
    [[nodiscard]] bool mirrorCamera() const { return m_mirrorCamera; }
    void setMirrorCamera(bool mirrored);
    [[nodiscard]] BubbleSize bubbleSize() const { return m_bubbleSize; }
    void setBubbleSize(BubbleSize size);
    /// Not held to any range: what may be chosen is the picker's business.
    [[nodiscard]] int countdownSeconds() const { return m_countdownSeconds; }
    void setCountdownSeconds(int seconds);
    [[nodiscard]] bool showPanelOnLaunch() const { return m_showPanelOnLaunch; }
    void setShowPanelOnLaunch(bool shown);
    [[nodiscard]] bool openLibraryAfterRecording() const { return m_openLibraryAfterRecording; }
    void setOpenLibraryAfterRecording(bool opened);

    /// The mode that a recording uses now: without an enabled camera, screen and camera is the screen only.
    [[nodiscard]] RecordingMode effectiveMode() const;

    /// Absent when the user has cleared the action's shortcut.
    [[nodiscard]] std::optional<Shortcut> shortcut(ShortcutAction action) const;
    /// An absent value clears it. A combination that another action has is taken away from that action,
    /// which is left with none.
    void setShortcut(const std::optional<Shortcut> &shortcut, ShortcutAction action);
    /// Every action is back on its default.
    void resetShortcuts();

Q_SIGNALS:
    /// Before every write of any property, also of an equal value: a reader still sees the old one.
    void willChange();

    void modeChanged();
    void captureAreaChanged();
    void displayIDChanged();
    void windowIDChanged();
    void windowTitleChanged();
    void cameraIDChanged();
    void micIDChanged();
    void cameraEnabledChanged();
    void micEnabledChanged();
    void systemAudioChanged();
    void qualityChanged();
    void countdownChanged();
    void highlightClicksChanged();
    void mirrorCameraChanged();
    void bubbleSizeChanged();
    void countdownSecondsChanged();
    void showPanelOnLaunchChanged();
    void openLibraryAfterRecordingChanged();
    void shortcutsChanged();

private:
    void load();
    /// `key` is null for what is not stored.
    template <typename Value>
    void assign(Value &member, const Value &value, const char *key, void (Settings::*changed)());

    UserDefaults &m_defaults;
    RecordingMode m_mode = RecordingMode::ScreenAndCamera;
    CaptureArea m_captureArea = CaptureArea::FullScreen;
    quint32 m_displayID = 0;
    quint32 m_windowID = 0;
    QString m_windowTitle;
    QString m_cameraID;
    QString m_micID;
    bool m_cameraEnabled = true;
    bool m_micEnabled = true;
    bool m_systemAudio = false;
    VideoQuality m_quality = VideoQuality::High;
    bool m_countdown = true;
    bool m_highlightClicks = false;
    bool m_mirrorCamera = true;
    BubbleSize m_bubbleSize = BubbleSize::Medium;
    int m_countdownSeconds = 3;
    bool m_showPanelOnLaunch = true;
    bool m_openLibraryAfterRecording = true;
    ShortcutOverrides m_shortcutOverrides;
};

} // namespace zivra
