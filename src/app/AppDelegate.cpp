#include "app/AppDelegate.h"

#include "capture/AudioMerger.h"
#include "capture/ScreenRecorder.h"

#include <QCoreApplication>
#include <QPointer>

#include <chrono>

namespace zivra {

RecordingCoordinator::Collaborators coordinatorCollaborators(Platform &platform, Settings &settings,
                                                             Devices &devices, Library &library,
                                                             Permissions &permissions,
                                                             const RecordingSurfaces &surfaces)
{
    return {settings,
            devices,
            surfaces.camera,
            library,
            permissions,
            platform.authorization,
            platform.screenAccess,
            platform.screens,
            platform.content,
            platform.alerts,
            platform.clock,
            surfaces.bubble,
            surfaces.drawing,
            surfaces.controlBar,
            surfaces.countdown,
            surfaces.areaSelector,
            [&platform](const ScreenRecorderOptions &options) -> std::unique_ptr<ScreenTake> {
                return std::make_unique<ScreenRecorder>(options, platform.captureStreams, platform.movies,
                                                        platform.queues);
            },
            [&platform](const QUrl &movie) {
                return AudioMerger::mergeAudioTracksIfNeeded(movie, platform.movies, platform.files,
                                                             platform.queues);
            }};
}

AppDelegate::AppDelegate(Platform &platform, ResidentPlatform &resident, RecordingSurfaces surfaces,
                         ApplicationParts parts)
    : m_platform(platform),
      m_resident(resident),
      m_parts(parts),
      m_settings(platform.defaults),
      m_devices(platform.deviceCatalog),
      m_library(platform.files, platform.movies),
      m_permissions(platform.authorization, platform.workspace),
      m_coordinator(
          coordinatorCollaborators(platform, m_settings, m_devices, m_library, m_permissions, surfaces))
{
}

void AppDelegate::applicationDidFinishLaunching()
{
    if (m_parts.recorderPanel != nullptr) {
        m_parts.recorderPanel->onVisibilityChange = [this](bool visible) {
            m_coordinator.setPreviewing(visible);
        };
    }
    m_resident.statusItem.setClickHandler([this] { statusItemClicked(); });
    m_resident.statusItem.setMenuProvider([this] { return makeMenu(); });
    m_coordinator.onWillStart = [this] { hidePanel(); };
    m_coordinator.onFinished = [this](const QUrl &movie) { handOver(movie); };
    const auto showPhase = [this] { updateStatusIcon(m_coordinator.isRecording()); };
    connect(&m_coordinator, &RecordingCoordinator::phaseChanged, this, showPhase);
    showPhase();
    m_library.completeInterrupted();

    registerHotKeys();
    m_hotKeyDebounce.setSingleShot(true);
    m_hotKeyDebounce.setInterval(std::chrono::milliseconds(50));
    connect(&m_hotKeyDebounce, &QTimer::timeout, this, &AppDelegate::registerHotKeys);
    connect(&m_settings, &Settings::willChange, &m_hotKeyDebounce, qOverload<>(&QTimer::start));

    if (m_parts.notifier != nullptr) {
        m_parts.notifier->start();
    }
    if (m_parts.updates != nullptr) {
        m_parts.updates->checkDailyInBackground();
    }
    if (m_settings.showPanelOnLaunch()) {
        showPanel();
    }
}

void AppDelegate::updateStatusIcon(bool recording)
{
    m_resident.statusItem.setGlyph(recording ? StatusGlyph::Recording : StatusGlyph::Idle);
    m_resident.statusItem.setToolTip(recording ? QStringLiteral("Finish recording")
                                               : QStringLiteral("Zivra"));
}

void AppDelegate::statusItemClicked()
{
    constexpr double kSecondsAfterHide = 0.3;
    if (m_coordinator.isRecording()) {
        m_coordinator.finish();
        return;
    }
    if (m_coordinator.phase() != RecordingCoordinator::Phase::Idle || m_parts.recorderPanel == nullptr) {
        return;
    }
    if (m_parts.recorderPanel->isVisible()) {
        m_parts.recorderPanel->hide();
        return;
    }
    // The press that closed the panel by taking its focus is the same click as this release.
    const MediaTime hidden = m_parts.recorderPanel->hiddenAt();
    if (!hidden.isValid() || (m_platform.clock.now() - hidden).seconds() > kSecondsAfterHide) {
        showPanel();
    }
}

std::vector<MenuItem> AppDelegate::makeMenu()
{
    return {
        {QStringLiteral("New Recording…"), {}, [this] { showPanel(); }},
        {QStringLiteral("My Videos"), {}, [this] { showLibrary(std::nullopt); }},
        {},
        {QStringLiteral("Settings…"), QStringLiteral(","), [this] { showSettings(std::nullopt); }},
        {},
        {QStringLiteral("Quit Zivra"), QStringLiteral("q"), [] { QCoreApplication::quit(); }},
    };
}

void AppDelegate::showPanel()
{
    if (m_coordinator.phase() == RecordingCoordinator::Phase::Idle && m_parts.recorderPanel != nullptr) {
        m_parts.recorderPanel->show(m_resident.statusItem.frame());
    }
}

void AppDelegate::hidePanel()
{
    if (m_parts.recorderPanel != nullptr) {
        m_parts.recorderPanel->hide();
    }
}

void AppDelegate::showLibrary(const std::optional<QUrl> &focus)
{
    if (m_parts.libraryWindow != nullptr) {
        m_parts.libraryWindow->show(focus);
    }
}

void AppDelegate::showSettings(std::optional<SettingsPane> pane)
{
    if (m_parts.settingsWindow != nullptr) {
        m_parts.settingsWindow->show(pane);
    }
}

void AppDelegate::reopen()
{
    showLibrary(std::nullopt);
}

void AppDelegate::handOver(const QUrl &movie)
{
    copyLinkOrFile(movie);
    if (m_settings.openLibraryAfterRecording()) {
        showLibrary(movie);
    }
}

QCoro::Task<> AppDelegate::copyLinkOrFile(QUrl movie)
{
    const QPointer<AppDelegate> self(this);
    const bool mayUpload =
        m_parts.account != nullptr && m_parts.uploader != nullptr && m_parts.account->autoUpload();
    if (mayUpload) {
        co_await m_parts.account->ready();
        if (!self) {
            co_return;
        }
    }
    if (mayUpload && m_parts.account->isConnected()) {
        m_parts.uploader->upload(movie, [self](const QString &link) {
            if (self) {
                self->m_resident.pasteboard.setString(link);
            }
        });
    } else {
        m_resident.pasteboard.setFile(movie);
    }
}

void AppDelegate::registerHotKeys()
{
    HotKeyCenter &center = HotKeyCenter::shared();
    center.unregisterAll();
    for (const ShortcutAction action : kAllShortcutActions) {
        if (const auto shortcut = m_settings.shortcut(action)) {
            center.registerHotKey(*shortcut, [self = QPointer(this), action] {
                if (self) {
                    self->run(action);
                }
            });
        }
    }
}

void AppDelegate::run(ShortcutAction action)
{
    switch (action) {
    case ShortcutAction::StartStop:
        m_coordinator.isRecording() ? m_coordinator.finish() : m_coordinator.start();
        break;
    case ShortcutAction::PauseResume:
        m_coordinator.togglePause();
        break;
    case ShortcutAction::Restart:
        m_coordinator.restart();
        break;
    case ShortcutAction::Cancel:
        m_coordinator.cancel();
        break;
    }
}

void AppDelegate::open(const QList<QUrl> &urls)
{
    for (const QUrl &url : urls) {
        if (url.scheme() == QLatin1String("zivra") && !url.host().isEmpty()) {
            openURL(url);
        }
    }
}

void AppDelegate::openURL(const QUrl &url)
{
    const QString host = url.host();
    if (host == QLatin1String("auth")) {
        if (m_parts.account != nullptr) {
            m_parts.account->handleCallback(url);
        }
        showPanel();
    } else if (host == QLatin1String("record")) {
        showPanel();
    } else if (host == QLatin1String("connect")) {
        showSettings(SettingsPane::Cloud);
        if (m_parts.account != nullptr) {
            connectAccount();
        }
    } else if (host == QLatin1String("settings")) {
        showSettings(settingsPaneNamed(url.path().section(QLatin1Char('/'), 1, 1)));
    }
}

QCoro::Task<> AppDelegate::connectAccount()
{
    const QPointer<CloudAccount> account(m_parts.account);
    co_await account->ready();
    if (account && !account->isConnected()) {
        account->connect();
    }
}

} // namespace zivra
