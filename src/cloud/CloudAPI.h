#pragma once

#include "platform/HttpSender.h"

#include <QByteArray>
#include <QCoroTask>
#include <QNetworkRequest>
#include <QString>
#include <QUrl>

#include <optional>

class QNetworkAccessManager;

namespace zivra {

/// A request that can still be given further headers.
struct CloudRequest {
    QNetworkRequest http;
    QByteArray method;
};

/// A cloud server and the right to talk to it: builds and sends single requests. A value; requests are sent
/// from the main thread and wait for the network without holding it up.
struct CloudAPI {
    QUrl baseURL;  ///< http or https, with a host, without a slash at its end
    QString token; ///< sent as it is, and told to nobody else

    /// `path` follows the base address; what a path cannot hold is encoded, slashes stay.
    [[nodiscard]] CloudRequest request(const QString &path, const QByteArray &method) const;

    /// Returns the body of an answer with a status from 200 to 299. Throws `CloudError` for any other answer
    /// and `TransportError` when there is none, or none for 120 seconds. A redirection is followed where it
    /// leads to the same host, and not from https to http: elsewhere the token would go with it.
    [[nodiscard]] QCoro::Task<QByteArray> send(CloudRequest request,
                                               std::optional<QByteArray> body = std::nullopt) const;
    /// The same for a large body, which goes by `sender`. That one must live until the answer is there.
    [[nodiscard]] QCoro::Task<QByteArray> send(CloudRequest request, QByteArray body,
                                               HttpSender &sender) const;

    /// The server's own words in the body of an error, `{"errors":{"title":["..."]}}` or `{"message":"..."}`.
    [[nodiscard]] static std::optional<QString> message(const QByteArray &body);
};

/// The one HTTP client of the process. Main thread only; made on first use, and there until the application
/// object goes.
[[nodiscard]] QNetworkAccessManager &sharedNetwork();

} // namespace zivra
