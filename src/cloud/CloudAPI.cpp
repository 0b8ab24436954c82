#include "cloud/CloudAPI.h"

#include "cloud/CloudError.h"

#include <QCoreApplication>
#include <QCoroFuture>
#include <QCoroNetworkReply>
#include <QJsonArray>
#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QPointer>

#include <algorithm>
#include <memory>
#include <utility>

namespace zivra {

namespace {

constexpr int kTimeout = 120'000; // milliseconds without a byte in either direction
constexpr int kMostRedirections = 5;

struct LaterDeleter {
    void operator()(QNetworkReply *reply) const { reply->deleteLater(); }
};
using ReplyPtr = std::unique_ptr<QNetworkReply, LaterDeleter>;

bool mayFollow(const QUrl &from, const QUrl &to)
{
    const bool isAsSafe = to.scheme() == QLatin1String("https") || to.scheme() == from.scheme();
    return isAsSafe && to.host() == from.host();
}

/// Sets `refused`, which must live as long as the reply, and ends the request where the token may not go.
void followRedirections(QNetworkReply &reply, bool &refused)
{
    QObject::connect(&reply, &QNetworkReply::redirected, &reply, [&reply, &refused](const QUrl &target) {
        if (mayFollow(reply.request().url(), target)) {
            Q_EMIT reply.redirectAllowed();
        } else {
            refused = true;
            reply.abort();
        }
    });
}

/// Errors of Qt up to this one are of the network and of proxies; the others tell of an answer, whose status
/// says more.
constexpr auto kLastTransportError = QNetworkReply::UnknownProxyError;

void throwIfUnanswered(const QNetworkReply &reply)
{
    const QNetworkReply::NetworkError error = reply.error();
    if (error == QNetworkReply::OperationCanceledError) {
        throw TransportError("The request timed out.");
    }
    if (error != QNetworkReply::NoError && error <= kLastTransportError) {
        throw TransportError(reply.errorString().toStdString());
    }
}

/// The body of an answer with that status. Throws `CloudError` for one that tells of a failure.
QByteArray contentOf(int status, const QByteArray &body)
{
    if (status < 200 || status > 299) {
        throw CloudError(status, CloudAPI::message(body));
    }
    return body;
}

HttpRequest withBody(const CloudRequest &request, QByteArray body)
{
    HttpRequest whole{request.http.url(), request.method, {}, std::move(body)};
    const QList<QByteArray> names = request.http.rawHeaderList();
    for (const QByteArray &name : names) {
        whole.headers.emplace_back(name, request.http.rawHeader(name));
    }
    return whole;
}

/// When the value is an object of arrays of strings, the first string of the first array.
std::optional<QString> validationMessage(const QJsonValue &errors)
{
    if (!errors.isObject()) {
        return std::nullopt;
    }
    const QJsonObject fields = errors.toObject();
    for (const QJsonValue messages : fields) {
        const QJsonArray all = messages.toArray();
        const bool areStrings =
            std::all_of(all.begin(), all.end(), [](const QJsonValue &each) { return each.isString(); });
        if (!messages.isArray() || !areStrings) {
            return std::nullopt;
        }
    }
    const QJsonArray first = fields.isEmpty() ? QJsonArray() : fields.begin()->toArray();
    return first.isEmpty() ? std::nullopt : std::optional(first.first().toString());
}

} // namespace

CloudRequest CloudAPI::request(const QString &path, const QByteArray &method) const
{
    constexpr auto kAllowedInPaths = "/!$&'()*+,;=:@"; // beside what is never encoded; RFC 3986, 3.3
    QUrl url = baseURL;
    url.setPath(baseURL.path(QUrl::FullyEncoded) + QLatin1Char('/') +
                    QString::fromLatin1(QUrl::toPercentEncoding(path, kAllowedInPaths)),
                QUrl::StrictMode);
    QNetworkRequest http(url);
    http.setTransferTimeout(kTimeout);
    http.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::UserVerifiedRedirectPolicy);
    http.setRawHeader("Authorization", "Bearer " + token.toUtf8());
    http.setRawHeader("Accept", "application/json");
    return {http, method};
}

QCoro::Task<QByteArray> CloudAPI::send(CloudRequest request, std::optional<QByteArray> body) const
{
    QNetworkAccessManager &network = sharedNetwork();
    bool isRefused = false;
    const ReplyPtr reply(body ? network.sendCustomRequest(request.http, request.method, *body)
                              : network.sendCustomRequest(request.http, request.method));
    followRedirections(*reply, isRefused);
    co_await reply.get();
    if (!isRefused) {
        throwIfUnanswered(*reply);
    }
    const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    if (isRefused || !status.isValid()) {
        throw CloudError(CloudError::badResponse);
    }
    co_return contentOf(status.toInt(), reply->readAll());
}

QCoro::Task<QByteArray> CloudAPI::send(CloudRequest request, QByteArray body, HttpSender &sender) const
{
    HttpRequest whole = withBody(request, std::move(body));
    for (int count = 0; count <= kMostRedirections; ++count) {
        HttpAnswer answer;
        try {
            auto received = co_await sender.send(whole);
            answer = received;
        } catch (const std::exception &error) {
            throw TransportError(error.what());
        }
        if (answer.redirect.isEmpty()) {
            co_return contentOf(answer.status, answer.body);
        }
        if (!mayFollow(whole.url, answer.redirect)) {
            break;
        }
        whole.url = answer.redirect;
    }
    throw CloudError(CloudError::badResponse);
}

std::optional<QString> CloudAPI::message(const QByteArray &body)
{
    const QJsonObject object = QJsonDocument::fromJson(body).object();
    if (auto text = validationMessage(object[QLatin1String("errors")])) {
        return text;
    }
    const QJsonValue message = object[QLatin1String("message")];
    return message.isString() ? std::optional(message.toString()) : std::nullopt;
}

QNetworkAccessManager &sharedNetwork()
{
    static QPointer<QNetworkAccessManager> manager;
    if (!manager) {
        manager = std::make_unique<QNetworkAccessManager>(QCoreApplication::instance()).release();
    }
    return *manager;
}

} // namespace zivra
