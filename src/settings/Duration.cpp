#include "settings/Duration.h"

#include <algorithm>
#include <cmath>

namespace zivra {

QString formatDuration(double seconds)
{
    const auto whole = std::max<qint64>(0, static_cast<qint64>(std::floor(seconds)));
    const auto twoDigits = [](qint64 number) {
        return QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0'));
    };
    const QString underAnHour = QStringLiteral(":%1").arg(twoDigits(whole % 60));
    const qint64 minutes = whole / 60;
    if (whole < 3600) {
        return QString::number(minutes) + underAnHour;
    }
    return QStringLiteral("%1:%2").arg(minutes / 60).arg(twoDigits(minutes % 60)) + underAnHour;
}

} // namespace zivra
