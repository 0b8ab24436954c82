#include "desktop/session/QtPasteboard.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

#include <memory>

namespace zivra::desktop {

void QtPasteboard::setString(const QString &text)
{
    QGuiApplication::clipboard()->setText(text);
}

void QtPasteboard::setFile(const QUrl &fileURL)
{
    const auto encoded = fileURL.toEncoded();
    auto data = std::make_unique<QMimeData>();
    // RFC 2483: every line ends with CR LF.
    data->setData(QStringLiteral("text/uri-list"), encoded + "\r\n");
    // GTK file managers paste by the first of these two, KDE's tells a copy from a cut by the second.
    data->setData(QStringLiteral("x-special/gnome-copied-files"), "copy\n" + encoded);
    data->setData(QStringLiteral("application/x-kde-cutselection"), "0");
    // For terminals and text fields. Qt would offer the URL as plain text otherwise, with its blanks bare.
    data->setText(fileURL.toLocalFile());
    QGuiApplication::clipboard()->setMimeData(data.release());
}

} // namespace zivra::desktop
