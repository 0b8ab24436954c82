#pragma once

#include <QString>
#include <QUrl>

#include <functional>

namespace zivra {

/// Uploads movies. Main thread only.
class CloudUploader {
public:
    virtual ~CloudUploader() = default;

    /// Returns at once. `onLink` gets the share link as soon as the service has named it.
    virtual void upload(const QUrl &file, std::function<void(const QString &link)> onLink) = 0;
};

} // namespace zivra
