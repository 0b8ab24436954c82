#include "updates/UpdateFeed.h"

#include "cloud/CloudError.h"
#include "cloud/WebLink.h"

#include <QJsonDocument>
#include <QStringList>

#include <algorithm>

namespace zivra {

namespace {

qint64 pieceAt(const QStringList &pieces, qsizetype index)
{
    const QString piece = pieces.value(index);
    // The conversion would step over blanks.
    const bool blank = std::any_of(piece.begin(), piece.end(), [](QChar c) { return c.isSpace(); });
    return blank ? 0 : piece.toLongLong();
}

} // namespace

std::optional<PublishedVersion> readUpdateFeed(const QByteArray &document)
{
    QJsonParseError error{};
    const QJsonDocument feed = QJsonDocument::fromJson(document, &error);
    if (error.error != QJsonParseError::NoError) {
        throw JsonError(error.errorString().toStdString());
    }
    const QJsonValue version = feed[QLatin1String("version")];
    const auto download = webLink(feed[QLatin1String("download_url")]);
    return version.isString() && download ? std::optional(PublishedVersion{version.toString(), *download})
                                          : std::nullopt;
}

bool isNewer(const QString &version, const QString &than)
{
    const QStringList offered = version.split(QLatin1Char('.'), Qt::SkipEmptyParts);
    const QStringList current = than.split(QLatin1Char('.'), Qt::SkipEmptyParts);
    for (qsizetype index = 0; index < std::max(offered.size(), current.size()); ++index) {
        const qint64 theirs = pieceAt(offered, index);
        const qint64 ours = pieceAt(current, index);
        if (theirs != ours) {
            return theirs > ours;
        }
    }
    return false;
}

} // namespace zivra
