#pragma once

#include <QUrl>

namespace zivra {

/// Whether the address stands for one that nobody has filled in: its host is in a domain that is reserved for
/// that and never exists (RFC 2606, section 2). Nothing is ever asked of such a host.
inline bool isInExampleDomain(const QUrl &url)
{
    const QString domain = url.host().section(QLatin1Char('.'), -1, -1, QString::SectionSkipEmpty);
    return domain == QLatin1String("example") || domain == QLatin1String("invalid");
}

} // namespace zivra
