#pragma once

#include "app/RecordingCoordinator.h"
#include "capture/Devices.h"
#include "cloud/CloudAccount.h"
#include "cloud/CloudNotifier.h"
#include "cloud/CloudServices.h"
#include "library/Library.h"
#include "library/LibraryWindowController.h"
#include "platform/Platform.h"
#include "settings/HotKeyCenter.h"
#include "settings/Settings.h"
#include "updates/UpdateChecker.h"
#include "windows/RecorderPanelController.h"
#include "windows/SettingsWindowController.h"

#include <QCoroTask>
#include <QList>
#include <QObject>
#include <QTimer>
#include <QUrl>

#include <vector>

namespace zivra {

/// The surfaces that a take shows on the screen.
struct RecordingSurfaces {
    CameraManager &camera;
    CameraBubbleController &bubble;
    DrawingOverlayController &drawing;
    ControlBarController &controlBar;
    CountdownController &countdown;
    AreaSelector &areaSelector;
};

/// The windows and services around the recordings. A build without one of them leaves it null, and
/// whatever would reach it then does nothing.
struct ApplicationParts {
    RecorderPanelController *recorderPanel = nullptr;
    LibraryWindowController *libraryWindow = nullptr;
    SettingsWindowController *settingsWindow = nullptr;
    CloudAccount *account = nullptr;
    CloudUploader *uploader = nullptr;
    CloudNotifier *notifier = nullptr;
    UpdateChecker *updates = nullptr;
};

/// The collaborators of a coordinator on that platform: the wiring that the resident program and a
/// single take share.
[[nodiscard]] RecordingCoordinator::Collaborators
coordinatorCollaborators(Platform &platform, Settings &settings, Devices &devices, Library &library,
                         Permissions &permissions, const RecordingSurfaces &surfaces);

/// The resident program's switchboard: owns the long-lived objects, connects them, and routes what
/// comes from the tray, the hot keys and our URLs. Main thread only; lives as long as the process.
class AppDelegate : public QObject {
    Q_OBJECT

public:
    AppDelegate(Platform &platform, ResidentPlatform &resident, RecordingSurfaces surfaces,
                ApplicationParts parts);

    /// Connects everything and puts us in the tray. Once.
    void applicationDidFinishLaunching();
    /// URLs handed to us, in order. What is no route of ours is dropped.
    void open(const QList<QUrl> &urls);
    /// Somebody has started the program again.
    void reopen();

    [[nodiscard]] RecordingCoordinator &coordinator() { return m_coordinator; }
    [[nodiscard]] Settings &settings() { return m_settings; }
    [[nodiscard]] const Library &library() const { return m_library; }

private:
    void statusItemClicked();
    [[nodiscard]] std::vector<MenuItem> makeMenu();
    void updateStatusIcon(bool recording);
    void showPanel();
    void hidePanel();
    void showLibrary(const std::optional<QUrl> &focus);
    void showSettings(std::optional<SettingsPane> pane);
    void registerHotKeys();
    void run(ShortcutAction action);
    void handOver(const QUrl &movie);
    /// Waits for the vault first, where the account may be connected.
    QCoro::Task<> copyLinkOrFile(QUrl movie);
    void openURL(const QUrl &url);
    /// Starts the sign-in unless the vault has a token.
    QCoro::Task<> connectAccount();

    Platform &m_platform;
    ResidentPlatform &m_resident;
    ApplicationParts m_parts;
    Settings m_settings;
    Devices m_devices;
    Library m_library;
    Permissions m_permissions;
    RecordingCoordinator m_coordinator;
    QTimer m_hotKeyDebounce;
};

} // namespace zivra
