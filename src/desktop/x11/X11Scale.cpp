#include "desktop/x11/X11Scale.h"

#include <QList>
#include <QtGlobal>

#include <optional>

namespace zivra::desktop
{

namespace
{

std::optional<double> positiveNumber(const QByteArray &text)
{
    bool isNumber = false;
    const double number = text.trimmed().toDouble(&isNumber);
    return isNumber && number > 0 ? std::optional(number) : std::nullopt;
}

/// The resource manager's property has one resource a line: a name, a colon, blanks and the value.
std::optional<double> resource(const QByteArray &resources, const QByteArray &name)
{
    for (const QByteArray &line : resources.split('\n')) {
        if (line.startsWith(name + ':')) {
            return positiveNumber(line.mid(name.size() + 1));
        }
    }
    return std::nullopt;
}

} // namespace

double pixelsPerPoint(const XcbConnection &connection)
{
    constexpr double kBaseResolution = 96;
    const QByteArray resources = connection.bytes(connection.root(), XCB_ATOM_RESOURCE_MANAGER);
    const double resolution = resource(resources, "Xft.dpi").value_or(kBaseResolution);
    return resolution / kBaseResolution * positiveNumber(qgetenv("QT_SCALE_FACTOR")).value_or(1);
}

} // namespace zivra::desktop
