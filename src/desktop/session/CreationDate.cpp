#include "desktop/session/CreationDate.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include <array>

namespace zivra::desktop {

namespace {

constexpr auto attribute = "user.zivra.created";

QDateTime storedDate(const QByteArray &path)
{
    std::array<char, 64> text{};
    const auto length = ::getxattr(path.constData(), attribute, text.data(), text.size());
    if (length <= 0) {
        return {};
    }
    return QDateTime::fromString(QString::fromLatin1(text.data(), length), Qt::ISODateWithMs);
}

QDateTime birthTime(const QByteArray &path)
{
    struct statx status = {};
    if (::statx(AT_FDCWD, path.constData(), 0, STATX_BTIME, &status) != 0 ||
        (status.stx_mask & STATX_BTIME) == 0) {
        return {};
    }
    const auto milliseconds = status.stx_btime.tv_sec * 1000 + status.stx_btime.tv_nsec / 1'000'000;
    return QDateTime::fromMSecsSinceEpoch(milliseconds, Qt::UTC);
}

} // namespace

QDateTime creationDate(const QByteArray &path)
{
    const auto stored = storedDate(path);
    return stored.isValid() ? stored : birthTime(path);
}

bool storeCreationDate(int file, const QDateTime &date)
{
    const auto text = date.toUTC().toString(Qt::ISODateWithMs).toLatin1();
    return ::fsetxattr(file, attribute, text.constData(), static_cast<std::size_t>(text.size()), 0) == 0;
}

void forgetCreationDate(int file)
{
    ::fremovexattr(file, attribute);
}

} // namespace zivra::desktop
