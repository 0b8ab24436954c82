#include "cloud/CloudError.h"
#include "require.h"
#include "updates/UpdateFeed.h"

using namespace zivra;

/// A feed leads to web addresses only, and no version is newer than itself.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray document(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    try {
        if (const auto published = readUpdateFeed(document)) {
            require(published->download.scheme().startsWith(QLatin1String("http")));
            require(!isNewer(published->version, published->version));
            require(!isNewer(published->version, QStringLiteral("1.2")) ||
                    !isNewer(QStringLiteral("1.2"), published->version));
        }
    } catch (const JsonError &error) {
        require(!userText(error).isEmpty());
    }
    return 0;
}
