#include "desktop/network/CurlSender.h"

#include "platform/PlatformError.h"

#include <QPromise>

#include <curl/curl.h>

#include <memory>
#include <mutex>
#include <new>

namespace zivra::desktop {

namespace {

constexpr int kMostAtOnce = 6;
constexpr long kTimeout = 120;                // seconds
constexpr long kSendBuffer = 512 << 10;       // bytes, of which each call to the system takes one
constexpr qsizetype kLongestAnswer = 1 << 20; // bytes

struct ClientDeleter {
    void operator()(CURL *client) const { curl_easy_cleanup(client); }
};
struct ListDeleter {
    void operator()(curl_slist *list) const { curl_slist_free_all(list); }
};
using HeaderList = std::unique_ptr<curl_slist, ListDeleter>;

/// The thread's own, which holds its open connections.
CURL *client()
{
    static std::once_flag once;
    std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
    thread_local const std::unique_ptr<CURL, ClientDeleter> own(curl_easy_init());
    if (!own) {
        throw std::bad_alloc();
    }
    curl_easy_reset(own.get());
    return own.get();
}

HeaderList headerList(const HttpRequest &request)
{
    curl_slist *list = curl_slist_append(nullptr, "Expect:"); // no question first whether the body is welcome
    for (const auto &[name, value] : request.headers) {
        list = curl_slist_append(list, (name + ": " + value).constData());
    }
    return HeaderList(list);
}

std::size_t keepAnswer(const char *data, std::size_t, std::size_t size, void *answer)
{
    auto &body = static_cast<HttpAnswer *>(answer)->body;
    if (body.size() + static_cast<qsizetype>(size) > kLongestAnswer) {
        return 0; // which ends the request
    }
    body.append(data, static_cast<qsizetype>(size));
    return size;
}

int endWhenClosing(void *isClosing, curl_off_t, curl_off_t, curl_off_t, curl_off_t)
{
    return *static_cast<const std::atomic<bool> *>(isClosing) ? 1 : 0;
}

QString failureText(CURLcode code)
{
    return code == CURLE_OPERATION_TIMEDOUT ? QStringLiteral("The request timed out.")
                                            : QString::fromUtf8(curl_easy_strerror(code));
}

HttpAnswer perform(const HttpRequest &request, std::atomic<bool> &isClosing)
{
    HttpAnswer answer;
    CURL *const curl = client();
    const HeaderList headers = headerList(request);
    const QByteArray url = request.url.toEncoded();
    curl_easy_setopt(curl, CURLOPT_URL, url.constData());
    curl_easy_setopt(curl, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(curl, CURLOPT_CUSTOMREQUEST, request.method.constData());
    curl_easy_setopt(curl, CURLOPT_HTTPHEADER, headers.get());
    curl_easy_setopt(curl, CURLOPT_POSTFIELDS, request.body.constData());
    curl_easy_setopt(curl, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.body.size()));
    curl_easy_setopt(curl, CURLOPT_UPLOAD_BUFFERSIZE, kSendBuffer);
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, keepAnswer);
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, &answer);
    curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT, kTimeout);
    curl_easy_setopt(curl, CURLOPT_LOW_SPEED_LIMIT, 1L); // bytes a second
    curl_easy_setopt(curl, CURLOPT_LOW_SPEED_TIME, kTimeout);
    curl_easy_setopt(curl, CURLOPT_NOPROGRESS, 0L);
    curl_easy_setopt(curl, CURLOPT_XFERINFOFUNCTION, endWhenClosing);
    curl_easy_setopt(curl, CURLOPT_XFERINFODATA, &isClosing);
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
    const CURLcode code = curl_easy_perform(curl);
    if (code != CURLE_OK) {
        throw PlatformError(failureText(code));
    }
    long status = 0;
    curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &status);
    answer.status = static_cast<int>(status);
    const char *redirect = nullptr;
    curl_easy_getinfo(curl, CURLINFO_REDIRECT_URL, &redirect);
    answer.redirect = QUrl::fromEncoded(redirect);
    return answer;
}

} // namespace

CurlSender::CurlSender()
{
    m_threads.setMaxThreadCount(kMostAtOnce);
}

CurlSender::~CurlSender()
{
    m_isClosing = true;
    m_threads.clear();
    m_threads.waitForDone();
}

QFuture<HttpAnswer> CurlSender::send(HttpRequest request)
{
    auto promise = std::make_shared<QPromise<HttpAnswer>>();
    promise->start();
    m_threads.start([this, promise, request = std::move(request)]() mutable {
        try {
            HttpAnswer answer = perform(request, m_isClosing);
            request = {}; // whoever waits may want the memory
            promise->addResult(std::move(answer));
        } catch (...) {
            promise->setException(std::current_exception());
        }
        promise->finish();
    });
    return promise->future();
}

} // namespace zivra::desktop
