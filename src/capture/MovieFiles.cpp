#include "capture/MovieFiles.h"

#include <QFileInfo>
#include <QUuid>

namespace zivra {

MovieFileType movieFileType(const QUrl &url)
{
    return QFileInfo(url.toLocalFile()).suffix() == QLatin1String("mov") ? MovieFileType::QuickTime
                                                                         : MovieFileType::Mpeg4;
}

QString temporaryName(QLatin1String prefix, const QUrl &original)
{
    return QStringLiteral("%1%2.%3").arg(prefix, QUuid::createUuid().toString(QUuid::WithoutBraces),
                                         QFileInfo(original.toLocalFile()).suffix());
}

} // namespace zivra
