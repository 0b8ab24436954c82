#pragma once

#include "platform/HttpSender.h"

#include <QThreadPool>

#include <atomic>

namespace zivra::desktop {

/// Sends by libcurl, each request on one of a few threads, which keep their connections for the next one.
/// Certificates are checked against the system's store. Destroying it ends what is on its way.
class CurlSender final : public HttpSender {
public:
    CurlSender();
    ~CurlSender() override;
    Q_DISABLE_COPY_MOVE(CurlSender)

    [[nodiscard]] QFuture<HttpAnswer> send(HttpRequest request) override;

private:
    std::atomic<bool> m_isClosing = false;
    QThreadPool m_threads;
};

} // namespace zivra::desktop
