#include "cloud/ActivityFeed.h"

#include "cloud/WebLink.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace zivra {

namespace {

std::optional<QString> stringAt(const QJsonObject &object, const char *key)
{
    const QJsonValue value = object.value(QLatin1String(key));
    return value.isString() ? std::optional(value.toString()) : std::nullopt;
}

QString titleFor(const std::optional<QString> &kind)
{
    if (kind == QLatin1String("comment")) {
        return QStringLiteral("New comment");
    }
    if (kind == QLatin1String("reaction")) {
        return QStringLiteral("New reaction");
    }
    return QStringLiteral("Someone watched your video");
}

QString bodyOf(const QJsonObject &item)
{
    const QString message = item.value(QLatin1String("message")).toString();
    const QString excerpt = item.value(QLatin1String("excerpt")).toString();
    return excerpt.isEmpty() ? message : message + QStringLiteral("\n\u201c") + excerpt + QChar(0x201d);
}

} // namespace

std::optional<ActivityFeed> readActivityFeed(const QByteArray &document)
{
    const QJsonDocument parsed = QJsonDocument::fromJson(document);
    if (!parsed.isObject()) {
        return std::nullopt;
    }
    ActivityFeed feed{stringAt(parsed.object(), "server_time"), {}};
    const QJsonArray data = parsed.object().value(QLatin1String("data")).toArray();
    for (const auto &element : data) {
        const QJsonObject item = element.toObject();
        if (const auto id = stringAt(item, "id")) {
            feed.activities.push_back({{.identifier = *id,
                                        .title = titleFor(stringAt(item, "kind")),
                                        .body = bodyOf(item),
                                        .sound = true,
                                        .url = webLink(item.value(QLatin1String("url")))},
                                       stringAt(item, "created_at")});
        }
    }
    return feed;
}

} // namespace zivra
