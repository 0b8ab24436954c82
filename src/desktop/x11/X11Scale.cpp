#include "desktop/x11/X11Scale.h"

#include <QList>
#include <QtGlobal>

#include <algorithm>
#include <cmath>
#include <optional>

namespace zivra::desktop {

namespace {

std::optional<double> positiveNumber(const QByteArray &text)
{
    bool isNumber = false;
    const double number = text.trimmed().toDouble(&isNumber);
    return isNumber && number > 0 ? std::optional(number) : std::nullopt;
}

/// The resource manager's property has one resource a line: name, colon, tab and value, as xrdb writes it.
std::optional<double> resource(const QByteArray &resources, const QByteArray &name)
{
    const QByteArray start = name + ":\t";
    for (const QByteArray &line : resources.split('\n')) {
        if (line.startsWith(start)) {
            return positiveNumber(line.mid(start.size()));
        }
    }
    return std::nullopt;
}

} // namespace

double pixelsPerPoint(const XcbConnection &connection)
{
    constexpr double kBaseResolution = 96;
    const QByteArray resources = connection.bytes(connection.root(), XCB_ATOM_RESOURCE_MANAGER);
    // Qt rounds the resolution to a whole number and never shrinks because of it (seen with Qt 6.4).
    const double resolution = std::round(resource(resources, "Xft.dpi").value_or(kBaseResolution));
    const double desktopScale = std::max(resolution / kBaseResolution, 1.0);
    return desktopScale * positiveNumber(qgetenv("QT_SCALE_FACTOR")).value_or(1);
}

} // namespace zivra::desktop
