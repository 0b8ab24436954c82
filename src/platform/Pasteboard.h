#pragma once

#include <QString>
#include <QUrl>

namespace zivra {

/// The clipboard. Main thread only. Each call replaces all that it held.
class Pasteboard {
public:
    virtual ~Pasteboard() = default;

    virtual void setString(const QString &text) = 0;
    /// A reference to the file, as file managers paste it.
    virtual void setFile(const QUrl &fileURL) = 0;
};

} // namespace zivra
