#pragma once

#include <QByteArray>
#include <QFuture>
#include <QUrl>

#include <utility>
#include <vector>

namespace zivra {

struct HttpRequest {
    QUrl url; ///< http or https
    QByteArray method;
    std::vector<std::pair<QByteArray, QByteArray>> headers; ///< names and values
    QByteArray body;
};

struct HttpAnswer {
    int status = 0;
    QByteArray body;
    QUrl redirect; ///< where the answer leads instead, absolute; empty where it does not
};

/// Sends requests with large bodies without holding anybody up. Main thread only.
class HttpSender {
public:
    virtual ~HttpSender() = default;

    /// The answer, whatever its status; redirections are not followed. Fails with a `PlatformError` in words
    /// for the user when there is none, or when not a byte went in either direction for 120 seconds.
    [[nodiscard]] virtual QFuture<HttpAnswer> send(HttpRequest request) = 0;
};

} // namespace zivra
