#pragma once

#include "platform/NotificationCenter.h"

#include <QByteArray>
#include <QJsonArray>
#include <QString>

#include <optional>

namespace zivra {

/// What happened to a shared video, as the user is told of it.
struct Activity {
    Notification notification;        ///< its identifier is the server's id of the activity
    std::optional<QString> createdAt; ///< the server's time, in words of its own
};

/// The server's answer to a question for news.
struct ActivityFeed {
    std::optional<QString> serverTime; ///< in words of its own
    std::vector<Activity> activities;  ///< in the server's order; those without an id are left out
};

/// Absent when the document is no JSON object. Fields of a wrong type count as missing.
[[nodiscard]] std::optional<ActivityFeed> readActivityFeed(const QByteArray &document);

} // namespace zivra
