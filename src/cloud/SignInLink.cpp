#include "cloud/SignInLink.h"

#include <QRandomGenerator>
#include <QUrlQuery>

#include <algorithm>
#include <array>

namespace zivra {

namespace {

constexpr qsizetype kLongestToken = 8192; // bytes

bool isControl(QChar character)
{
    return character.category() == QChar::Other_Control;
}

/// The first item of that name, decoded. An item without a value reads as empty.
std::optional<QString> firstItem(const QUrlQuery &query, const QString &name)
{
    const auto items = query.queryItems(QUrl::FullyDecoded);
    const auto found =
        std::find_if(items.begin(), items.end(), [&](const auto &item) { return item.first == name; });
    return found == items.end() ? std::nullopt : std::optional(found->second);
}

QString encoded(const QString &value)
{
    return QString::fromLatin1(QUrl::toPercentEncoding(value));
}

} // namespace

QString randomSignInState()
{
    std::array<quint32, 6> random{};
    QRandomGenerator::system()->fillRange(random.data(), random.size());
    const QByteArray bytes(reinterpret_cast<const char *>(random.data()), sizeof(random));
    return QString::fromLatin1(
        bytes.toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals));
}

QUrl signInPage(const QUrl &server, const QString &state, const QString &computerName)
{
    QUrlQuery query;
    query.addQueryItem(QStringLiteral("state"), encoded(state));
    query.addQueryItem(QStringLiteral("device"), encoded(computerName));
    QUrl page = server;
    page.setPath(server.path(QUrl::FullyEncoded) + QStringLiteral("/desktop/connect"), QUrl::TolerantMode);
    page.setQuery(query);
    return page;
}

std::optional<QString> tokenOfCallback(const QUrl &url, const QString &expectedState)
{
    const QUrlQuery query(url);
    auto token = firstItem(query, QStringLiteral("token"));
    const bool wellFormed = token && !token->isEmpty() && token->toUtf8().size() <= kLongestToken &&
                            std::none_of(token->begin(), token->end(), isControl);
    const bool ours = !expectedState.isEmpty() && firstItem(query, QStringLiteral("state")) == expectedState;
    return wellFormed && ours ? token : std::nullopt;
}

QString pastedToken(const QString &text)
{
    QString token = text;
    token.removeIf(isControl);
    return token.trimmed();
}

} // namespace zivra
