#include "cloud/CloudError.h"

#include <QJsonDocument>
#include <QJsonParseError>

namespace zivra {

namespace {

constexpr int kUnauthorized = 401;

const char *textOf(CloudError::Case code)
{
    switch (code) {
    case CloudError::notConnected:
        return "Connect your Zivra account first.";
    case CloudError::invalidServer:
        return "The server address isn't valid.";
    case CloudError::http:
    case CloudError::badResponse:
        break;
    }
    return "The server sent an unexpected response.";
}

QString textOf(int status, const std::optional<QString> &message)
{
    if (status == kUnauthorized) {
        return QStringLiteral("Your session expired. Connect your account again.");
    }
    return message.value_or(QStringLiteral("The server returned an error (%1).").arg(status));
}

} // namespace

CloudError::CloudError(Case code) : std::runtime_error(textOf(code)), m_code(code) {}

CloudError::CloudError(int status, const std::optional<QString> &message)
    : std::runtime_error(textOf(status, message).toStdString()),
      m_code(http),
      m_status(status)
{
}

QJsonObject jsonObject(const QByteArray &body)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(body, &error);
    if (error.error != QJsonParseError::NoError) {
        throw JsonError(error.errorString().toStdString());
    }
    if (!document.isObject()) {
        throw CloudError(CloudError::badResponse);
    }
    return document.object();
}

} // namespace zivra
