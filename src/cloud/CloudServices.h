#pragma once

#include <QString>
#include <QUrl>

#include <functional>

namespace zivra {

/// The user's account on the sharing service, as the rest of the program sees it. Main thread only.
class CloudAccount {
public:
    virtual ~CloudAccount() = default;

    [[nodiscard]] virtual bool hasToken() const = 0;
    /// Finished recordings are to be uploaded without being asked for.
    [[nodiscard]] virtual bool autoUpload() const = 0;
    /// Starts the sign-in in the browser.
    virtual void connect() = 0;
    /// Finishes the sign-in with the URL that the browser hands back; false when it was not taken.
    virtual bool handleCallback(const QUrl &url) = 0;
};

/// Uploads movies. Main thread only.
class CloudUploader {
public:
    virtual ~CloudUploader() = default;

    /// Returns at once. `onLink` gets the share link as soon as the service has named it.
    virtual void upload(const QUrl &file, std::function<void(const QString &link)> onLink) = 0;
};

/// Tells the user of activity on the service. Main thread only.
class CloudNotifier {
public:
    virtual ~CloudNotifier() = default;

    /// Asks the desktop for leave to notify, polls now and then every 30 seconds.
    virtual void start() = 0;
};

} // namespace zivra
