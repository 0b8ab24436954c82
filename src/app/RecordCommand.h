#pragma once

#include "app/AppDelegate.h"
#include "app/NoSurfaces.h"
#include "app/RecordArguments.h"

#include <QTimer>

#include <functional>
#include <memory>

namespace zivra {

/// The displays, with the mouse said to be on a given one: that is how a take is told its display where
/// otherwise the mouse decides.
class ScreensAsIfMouseOn final : public Screens {
public:
    ScreensAsIfMouseOn(Screens &screens, std::uint32_t displayID) : m_screens(screens), m_displayID(displayID)
    {
    }

    [[nodiscard]] std::vector<Screen> screens() const override { return m_screens.screens(); }
    [[nodiscard]] QPointF mouseLocation() const override;

private:
    Screens &m_screens;
    std::uint32_t m_displayID;
};

/// One take from the shell, through the same coordinator as every other: no countdown, no hand-over, and on
/// the screen at most the camera's bubble. Main thread only.
///
/// `platform.defaults` must not be the stored ones: the arguments are set there.
class RecordCommand : public QObject {
    Q_OBJECT

public:
    RecordCommand(Platform platform, CameraManager &camera, CameraBubbleController &bubble,
                  RecordArguments arguments);

    /// `onEnd` is called once, with the movie or without when there is none; `onTrouble` with each line
    /// of what went wrong on the way.
    void start(std::function<void(const std::optional<QUrl> &movie)> onEnd,
               std::function<void(const QString &line)> onTrouble);
    /// Finishes the take, as soon as it has begun.
    void stop();

private:
    void applyArguments();
    /// In words, what the arguments name and the desktop does not have; empty when all is there.
    [[nodiscard]] QString missingDevice() const;
    [[nodiscard]] QString missingCamera() const;
    void phaseChanged();

    RecordArguments m_arguments;
    ScreensAsIfMouseOn m_screens;
    Platform m_platform;
    Settings m_settings;
    Devices m_devices;
    Library m_library;
    Permissions m_permissions;
    NoDrawingOverlay m_drawing;
    NoControlBar m_controlBar;
    NoCountdown m_countdown;
    FixedAreaSelector m_areaSelector;
    RecordingCoordinator m_coordinator;
    std::function<void(const std::optional<QUrl> &)> m_onEnd;
    std::optional<QUrl> m_movie;
    QTimer m_limit;
    bool m_stopRequested = false;
};

} // namespace zivra
