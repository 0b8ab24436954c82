#pragma once

#include <QFile>
#include <QString>

#include <cstdio>
#include <memory>

namespace zivra {

/// What a shell command prints. Not by way of `QProcess`: after it the thread sanitizer overlooks the locks
/// of the calling thread.
inline QByteArray shell(const QString &command)
{
    const std::unique_ptr<FILE, int (*)(FILE *)> output(popen(qPrintable(command), "r"), pclose);
    QFile text;
    return output && text.open(output.get(), QIODevice::ReadOnly) ? text.readAll() : QByteArray();
}

} // namespace zivra
