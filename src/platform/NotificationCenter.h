#pragma once

#include <QString>
#include <QUrl>

#include <functional>
#include <optional>

namespace zivra {

/// A message in the corner of the screen. All texts are plain.
struct Notification {
    QString identifier; ///< a later notification with an equal one takes the place of the earlier
    QString title;
    QString body;
    bool sound = false;
    std::optional<QUrl> url; ///< handed to the activation handler

    friend bool operator==(const Notification &, const Notification &) = default;
};

/// Shows notifications. Main thread only; never waits. A desktop without them, or a user who wants none,
/// sees none: nobody is told.
class NotificationCenter {
public:
    virtual ~NotificationCenter() = default;

    /// Asks the user for leave where the desktop wants that.
    virtual void requestAuthorization() = 0;
    virtual void show(const Notification &notification) = 0;
    /// Called with the `url` of a notification that the user clicks. One handler at a time; null for none.
    virtual void setActivationHandler(std::function<void(const QUrl &url)> handler) = 0;
};

} // namespace zivra
