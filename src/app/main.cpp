#include "app/AppDelegate.h"
#include "app/LibraryFolder.h"
#include "app/RecordCommand.h"
#include "capture/SessionCameraManager.h"
#include "desktop/audio/PulseDeviceCatalog.h"
#include "desktop/audio/PulseSoundSourceFactory.h"
#include "desktop/camera/DesktopCameras.h"
#include "desktop/media/FFmpegMovieServices.h"
#include "desktop/network/CurlSender.h"
#include "desktop/process/TerminationSignals.h"
#include "desktop/secrets/KeychainSecretStore.h"
#include "desktop/session/ComputerName.h"
#include "desktop/session/ConsoleAlertPresenter.h"
#include "desktop/session/DBusNotificationCenter.h"
#include "desktop/session/DesktopFileSystem.h"
#include "desktop/session/DesktopWorkspace.h"
#include "desktop/session/DialogAlertPresenter.h"
#include "desktop/session/JsonUserDefaults.h"
#include "desktop/session/QtPasteboard.h"
#include "desktop/session/SingleInstance.h"
#include "desktop/session/TransientUserDefaults.h"
#include "desktop/session/TrayStatusItem.h"
#include "desktop/session/UserMediaAuthorization.h"
#include "desktop/stream/ComposedCaptureStream.h"
#include "desktop/stream/ComposedDeviceCatalog.h"
#include "desktop/threads/MonotonicClock.h"
#include "desktop/threads/ThreadSerialQueue.h"
#include "desktop/x11/X11ContentQuery.h"
#include "desktop/x11/X11HotKeys.h"
#include "desktop/x11/X11Screens.h"
#include "desktop/x11/XcbConnection.h"
#include "desktop/x11/capture/X11PictureSourceFactory.h"
#include "desktop/x11/capture/X11ScreenCaptureAccess.h"
#include "desktop/x11/panels/X11PanelSurfaces.h"
#include "overlays/AreaSelectorPanel.h"
#include "overlays/CameraBubble.h"
#include "overlays/ControlBar.h"
#include "overlays/CountdownPanel.h"
#include "overlays/DrawingOverlay.h"
#include "overlays/Tooltips.h"
#include "platform/PlatformError.h"
#include "ui/ViewLoader.h"

#include <QApplication>
#include <QCoreApplication>

#include <malloc.h>

#include <csignal>
#include <cstdio>
#include <memory>

namespace zivra {

namespace {

constexpr int kSuccess = 0;
constexpr int kNoMovie = 1;
constexpr int kBadUsage = 2;

constexpr auto kHelp =
    "Usage: zivra [URL...]            start in the tray, or hand zivra:// URLs to the running program\n"
    "       zivra record [OPTION...]  record one movie and print its path\n"
    "       zivra --help | --version\n"
    "\n"
    "Options of record:\n"
    "  --seconds N           end after N seconds; otherwise at SIGINT (Ctrl+C) or SIGTERM\n"
    "  --mode MODE           screenOnly, screenAndCamera or cameraOnly (default: screenOnly)\n"
    "  --area AREA           fullScreen, window or customArea (default: fullScreen)\n"
    "  --window ID           the window to record\n"
    "  --rect X,Y,W,H        the rectangle to record, in points from the display's top left\n"
    "  --display ID          the display to record (default: the one under the mouse)\n"
    "  --quality HEIGHT      greatest height of the movie: 480, 720 or 1080 (default: 1080)\n"
    "  --system-audio        record the computer's sound\n"
    "  --microphone [ID]     record a microphone (default: the desktop's choice)\n"
    "  --camera [ID]         the camera of the modes with one (default: the first one)\n"
    "  --clicks              show mouse clicks\n";

void printLine(std::FILE *stream, const QString &line)
{
    std::fprintf(stream, "%s\n", qUtf8Printable(line));
    std::fflush(stream);
}

void complain(const QString &line)
{
    printLine(stderr, QStringLiteral("zivra: %1").arg(line));
}

/// The services of this desktop that every take needs. Nothing here draws or takes the keyboard.
struct CaptureServices {
    desktop::MonotonicClock clock;
    desktop::ThreadSerialQueueFactory queues;
    desktop::X11Screens screens;
    desktop::X11ContentQuery content;
    desktop::X11ScreenCaptureAccess screenAccess;
    desktop::UserMediaAuthorization authorization;
    std::shared_ptr<desktop::PulseServer> soundServer = desktop::connectToPulseServer();
    desktop::DesktopCameras cameras;
    desktop::PulseDeviceCatalog microphones{soundServer};
    desktop::ComposedDeviceCatalog deviceCatalog{cameras, microphones};
    desktop::X11PictureSourceFactory pictures;
    desktop::PulseSoundSourceFactory sounds{soundServer};
    desktop::ComposedCaptureStreamFactory captureStreams{pictures, sounds};
    desktop::FFmpegMovieServices movies;
    desktop::DesktopFileSystem files;
    desktop::DesktopWorkspace workspace;
    SessionCameraManager camera{{cameras, sounds, movies, clock}, queues};

    [[nodiscard]] Platform platform(UserDefaults &defaults, AlertPresenter &alerts)
    {
        return {defaults,       clock,  screens, content, screenAccess, authorization, deviceCatalog,
                captureStreams, movies, queues,  files,   alerts,       workspace};
    }
};

void nameApplication()
{
    QCoreApplication::setApplicationName(QStringLiteral("Zivra"));
    QCoreApplication::setApplicationVersion(QStringLiteral(ZIVRA_VERSION));
}

/// Throws in words where QApplication would abort.
void requireDisplay()
{
    const desktop::XcbConnection connection;
}

QStringList wordsFrom(int argc, char **argv)
{
    QStringList words;
    for (int index = 0; index < argc; ++index) {
        words.append(QString::fromLocal8Bit(argv[index]));
    }
    return words;
}

int runTake(const RecordArguments &arguments, CameraBubbleController &bubble)
{
    desktop::JsonUserDefaults stored(desktop::JsonUserDefaults::standardPath());
    desktop::TransientUserDefaults defaults(stored);
    desktop::ConsoleAlertPresenter alerts;
    CaptureServices services;
    RecordCommand command(services.platform(defaults, alerts), services.camera, bubble, arguments);
    const desktop::TerminationSignals signalsStop([&command] { command.stop(); });
    int status = kNoMovie;
    command.start(
        [&status](const std::optional<QUrl> &movie) {
            if (movie) {
                printLine(stdout, movie->toLocalFile());
                status = kSuccess;
            }
            QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection);
        },
        complain);
    QCoreApplication::exec();
    return status;
}

int recordWithBubble(const RecordArguments &arguments, char **argv)
{
    requireDisplay();
    int ownName = 1; // Qt would take --display for its own
    QApplication application(ownName, argv);
    nameApplication();
    QApplication::setQuitOnLastWindowClosed(false);
    ViewLoader views;
    desktop::X11PanelSurfaces panelSurfaces;
    const PanelMaker panels{panelSurfaces, views};
    const Tooltips tooltips(panels);
    CameraBubble bubble(panels);
    return runTake(arguments, bubble);
}

int recordWithoutWindows(const RecordArguments &arguments, int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    nameApplication();
    NoCameraBubble bubble;
    return runTake(arguments, bubble);
}

int record(int argc, char **argv)
{
    RecordArguments arguments;
    try {
        arguments = RecordArguments::parse(wordsFrom(argc, argv).mid(2));
    } catch (const ArgumentError &error) {
        complain(QString::fromUtf8(error.what()));
        return kBadUsage;
    }
    return arguments.mode == RecordingMode::ScreenAndCamera ? recordWithBubble(arguments, argv)
                                                            : recordWithoutWindows(arguments, argc, argv);
}

/// The program in the tray.
struct Resident {
    desktop::JsonUserDefaults defaults{desktop::JsonUserDefaults::standardPath()};
    desktop::DialogAlertPresenter alerts;
    CaptureServices services;
    Platform platform = services.platform(defaults, alerts);
    desktop::X11HotKeys hotKeys;
    desktop::TrayStatusItem statusItem;
    desktop::QtPasteboard pasteboard;
    ResidentPlatform resident{hotKeys, statusItem, pasteboard};
    ViewLoader views;
    desktop::X11PanelSurfaces panelSurfaces;
    PanelMaker panels{panelSurfaces, views};
    Tooltips tooltips{panels};
    CameraBubble bubble{panels};
    DrawingOverlay drawing{panels, services.clock};
    ControlBar controlBar{panels, drawing.model()};
    CountdownPanel countdown{panels};
    AreaSelectorPanel areaSelector{panels};
    LibraryFolder libraryWindow{services.workspace, [this] { return delegate.library().folder(); }};
    desktop::KeychainSecretStore secrets;
    desktop::DBusNotificationCenter notifications;
    CloudAccount account{{defaults, secrets, services.workspace, alerts, desktop::computerName()}};
    CloudNotifier notifier{account, defaults, notifications, services.workspace};
    UpdateChecker updates{UpdateChecker::standardFeed(), QCoreApplication::applicationVersion(), defaults,
                          notifications};
    AppDelegate delegate;
    desktop::CurlSender sender;
    CloudUploader uploader{account, delegate.library().folder(), services.movies, sender};

    Resident()
        : delegate(platform, resident, surfaces(),
                   {.libraryWindow = &libraryWindow,
                    .account = &account,
                    .uploader = &uploader,
                    .notifier = &notifier,
                    .updates = &updates})
    {
        HotKeyCenter::shared().useService(&hotKeys);
        delegate.coordinator().onTakeDied = complain;
    }
    ~Resident() { HotKeyCenter::shared().useService(nullptr); }
    Resident(const Resident &) = delete;
    Resident &operator=(const Resident &) = delete;

    RecordingSurfaces surfaces()
    {
        return {services.camera, bubble, drawing, controlBar, countdown, areaSelector};
    }
};

QList<QUrl> urlsFrom(const QStringList &arguments)
{
    QList<QUrl> urls;
    for (const QString &argument : arguments) {
        // Tolerant: browsers leave characters of a token as they are that a query should not hold.
        urls.append(QUrl(argument));
    }
    return urls;
}

int runInTray(int argc, char **argv)
{
    requireDisplay();
    QApplication application(argc, argv);
    nameApplication();
    QApplication::setApplicationDisplayName(QStringLiteral("Zivra"));
    QApplication::setDesktopFileName(QStringLiteral("io.quillbeck.zivra"));
    QApplication::setQuitOnLastWindowClosed(false);
    const QList<QUrl> urls = urlsFrom(QCoreApplication::arguments().mid(1));

    desktop::SingleInstance instance;
    if (instance.claim() == desktop::SingleInstance::Role::Secondary) {
        return instance.handOver(urls) ? kSuccess : kNoMovie;
    }
    Resident program;
    instance.setActivateHandler([&program] { program.delegate.reopen(); });
    instance.setOpenHandler([&program](const QList<QUrl> &opened) { program.delegate.open(opened); });
    program.delegate.applicationDidFinishLaunching();
    program.delegate.open(urls);
    return QApplication::exec();
}

int usageError(const char *argument)
{
    complain(
        QStringLiteral("unknown argument \"%1\"; see zivra --help").arg(QString::fromLocal8Bit(argument)));
    return kBadUsage;
}

int run(int argc, char **argv)
{
    // A movie that grows beyond a limit on file sizes is to fail like on a full disk, in words.
    std::signal(SIGXFSZ, SIG_IGN);
    // Every take has new threads. With an arena for each, what a take has freed would be kept many times
    // over.
    mallopt(M_ARENA_MAX, 2);
    const QByteArray first = argc > 1 ? argv[1] : "";
    if (first == "--help" || first == "-h") {
        std::fputs(kHelp, stdout);
        return kSuccess;
    }
    if (first == "--version") {
        printLine(stdout, QStringLiteral("Zivra %1").arg(QStringLiteral(ZIVRA_VERSION)));
        return kSuccess;
    }
    if (first == "record") {
        return record(argc, argv);
    }
    for (int index = 1; index < argc; ++index) {
        if (!QByteArray(argv[index]).startsWith("zivra:")) {
            return usageError(argv[index]);
        }
    }
    return runInTray(argc, argv);
}

} // namespace

} // namespace zivra

int main(int argc, char **argv)
{
    try {
        return zivra::run(argc, argv);
    } catch (const std::exception &error) {
        zivra::complain(QString::fromUtf8(error.what()));
        return zivra::kNoMovie;
    }
}
