#include "desktop/session/DesktopWorkspace.h"

#include "desktop/session/PrivacySettings.h"

#include <QDesktopServices>
#include <QProcess>
#include <QStandardPaths>

namespace zivra::desktop {

void DesktopWorkspace::open(const QUrl &url)
{
    static const QStringList schemes{QStringLiteral("http"), QStringLiteral("https"), QStringLiteral("file")};
    if (url.isValid() && schemes.contains(url.scheme())) {
        QDesktopServices::openUrl(url);
    }
}

void DesktopWorkspace::openPrivacySettings(const QString &pane)
{
    const auto desktops = qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(QLatin1Char(':'));
    for (auto command : privacySettingsCommands(pane, desktops)) {
        const auto program = QStandardPaths::findExecutable(command.takeFirst());
        if (!program.isEmpty()) {
            QProcess::startDetached(program, command);
            return;
        }
    }
}

} // namespace zivra::desktop
