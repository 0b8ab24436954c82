#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <optional>

namespace zivra {

/// A version on offer.
struct PublishedVersion {
    QString version;
    QUrl download; ///< http or https

    friend bool operator==(const PublishedVersion &, const PublishedVersion &) = default;
};

/// What the feed's document offers; absent when it lacks a version or a web address to get it from. Throws
/// `JsonError` when the document is no JSON.
[[nodiscard]] std::optional<PublishedVersion> readUpdateFeed(const QByteArray &document);

/// Compares versions piece by piece, each a whole number between dots. A missing piece counts as 0, and so
/// does one that is no such number.
[[nodiscard]] bool isNewer(const QString &version, const QString &than);

} // namespace zivra
