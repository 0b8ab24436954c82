#include "cloud/SignInLink.h"
#include "require.h"

using namespace zivra;

/// No URL brings a token that could break out of a header, and none without the right state.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray text(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    for (const QUrl &url : {QUrl(QString::fromUtf8(text)), QUrl::fromEncoded(text),
                            QUrl(QStringLiteral("zivra://auth?state=s&token=") + QString::fromUtf8(text))}) {
        require(!tokenOfCallback(url, {}));
        const auto token = tokenOfCallback(url, QStringLiteral("s"));
        require(!token || (!token->isEmpty() && token->toUtf8().size() <= 8192 && !token->contains(u'\n') &&
                           !token->contains(u'\r') && !token->contains(u'\0')));
    }
    const QString pasted = pastedToken(QString::fromUtf8(text));
    require(!pasted.contains(u'\n') && pastedToken(pasted) == pasted);
    return 0;
}
