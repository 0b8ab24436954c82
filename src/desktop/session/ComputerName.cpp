#include "desktop/session/ComputerName.h"

#include <QFile>
#include <QRegularExpression>
#include <QSysInfo>

namespace zivra::desktop {

QString computerName()
{
    QFile info(QStringLiteral("/etc/machine-info"));
    if (info.open(QIODevice::ReadOnly)) {
        static const QRegularExpression entry(QStringLiteral("^PRETTY_HOSTNAME=([\"']?)(.+)\\1$"),
                                              QRegularExpression::MultilineOption);
        const auto match = entry.match(QString::fromUtf8(info.readAll()));
        if (match.hasMatch()) {
            return match.captured(2);
        }
    }
    return QSysInfo::machineHostName();
}

} // namespace zivra::desktop
