#include "cloud/Keychain.h"

#include <QCoroFuture>
#include <QStringDecoder>

namespace zivra {

namespace {

// The application's identifier, which is the name of its secrets' service.
const QString kService = QStringLiteral("io.quillbeck.zivra");

std::optional<QString> text(const QByteArray &bytes)
{
    QStringDecoder decode(QStringDecoder::Utf8);
    QString decoded = decode(bytes);
    return decode.hasError() ? std::nullopt : std::optional(std::move(decoded));
}

} // namespace

QCoro::Task<Keychain::Answer> Keychain::read(QString account)
{
    const SecretAnswer answer = co_await m_store.read(kService, account);
    Answer result{answer.outcome != SecretAnswer::Outcome::Unavailable, std::nullopt};
    if (answer.outcome == SecretAnswer::Outcome::Found) {
        result.value = text(answer.value);
    }
    co_return result;
}

void Keychain::write(const QString &value, const QString &account)
{
    remove(account);
    m_store.write(kService, account, value.toUtf8());
}

void Keychain::remove(const QString &account)
{
    m_store.remove(kService, account);
}

} // namespace zivra
