#include "desktop/session/UserMediaAuthorization.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

#include <unistd.h>

#include <algorithm>

namespace zivra::desktop {

namespace {

bool mayReadAndWrite(const QString &path)
{
    return ::access(QFile::encodeName(path).constData(), R_OK | W_OK) == 0;
}

bool soundServerIsThere()
{
    const QDir runtime(QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation));
    return !qEnvironmentVariableIsEmpty("PULSE_SERVER") || runtime.exists(QStringLiteral("pulse/native")) ||
           runtime.exists(QStringLiteral("pipewire-0"));
}

QStringList devices(const QDir &folder, const QString &pattern)
{
    QStringList paths;
    const auto names = folder.entryList({pattern}, QDir::System | QDir::Files);
    for (const auto &name : names) {
        paths.append(folder.filePath(name));
    }
    return paths;
}

} // namespace

UserMediaAuthorization::UserMediaAuthorization(MediaAccess access) : m_access(std::move(access)) {}

MediaAccess UserMediaAuthorization::thisMachine()
{
    return {.deviceFolder = QStringLiteral("/dev"),
            .mayOpen = mayReadAndWrite,
            .hasSoundServer = soundServerIsThere};
}

AuthorizationStatus UserMediaAuthorization::authorizationStatus(MediaType type) const
{
    const QDir folder(m_access.deviceFolder);
    const bool isAudio = type == MediaType::Audio;
    // ALSA names capture devices pcmC<card>D<device>c.
    const auto found = isAudio ? devices(folder.filePath(QStringLiteral("snd")), QStringLiteral("pcm*c"))
                               : devices(folder, QStringLiteral("video*"));
    const bool isAllowed = found.isEmpty() || std::ranges::any_of(found, m_access.mayOpen) ||
                           (isAudio && m_access.hasSoundServer());
    return isAllowed ? AuthorizationStatus::Authorized : AuthorizationStatus::Denied;
}

QFuture<bool> UserMediaAuthorization::requestAccess(MediaType type)
{
    return QtFuture::makeReadyFuture(authorizationStatus(type) == AuthorizationStatus::Authorized);
}

} // namespace zivra::desktop
