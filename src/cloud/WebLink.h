#pragma once

#include <QJsonValue>
#include <QUrl>

#include <optional>

namespace zivra {

/// The link that a server sends as a string. Absent for anything but a web address: the desktop would run
/// the user's programs for others.
inline std::optional<QUrl> webLink(const QJsonValue &value)
{
    const QUrl url(value.toString(), QUrl::StrictMode);
    const bool web = url.scheme() == QLatin1String("https") || url.scheme() == QLatin1String("http");
    return web && !url.host().isEmpty() ? std::optional(url) : std::nullopt;
}

} // namespace zivra
