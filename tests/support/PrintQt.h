#pragma once

#include <QString>
#include <QUrl>

#include <ostream>

// How GoogleTest shows these when an expectation fails; found by argument-dependent lookup.

inline void PrintTo(const QString &text, std::ostream *stream)
{
    *stream << '"' << text.toStdString() << '"';
}

inline void PrintTo(const QUrl &url, std::ostream *stream)
{
    *stream << url.toString().toStdString();
}
