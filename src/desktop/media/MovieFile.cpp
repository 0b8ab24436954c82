#include "desktop/media/MovieFile.h"

#include "platform/PlatformError.h"

#include <QFile>
#include <QFileInfo>
#include <QtEndian>

namespace zivra::desktop {

namespace {

QString readFailureText(const QString &path)
{
    return QStringLiteral("“%1” can’t be read").arg(QFileInfo(path).fileName());
}

[[noreturn]] void throwDamaged(const QString &path)
{
    throw PlatformError(QStringLiteral("“%1” is damaged.").arg(QFileInfo(path).fileName()));
}

/// Whether the boxes that a movie file consists of (ISO/IEC 14496-12, 4.2) end where the file does.
bool isWhole(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return false;
    }
    constexpr qint64 kHeaderSize = 8;
    qint64 position = 0;
    while (position < file.size()) {
        const bool sought = file.seek(position);
        const auto header = file.read(kHeaderSize + 8); // with room for a 64-bit size
        if (!sought || header.size() < kHeaderSize) {
            return false;
        }
        qint64 size = qFromBigEndian<quint32>(header.constData());
        if (size == 1 && header.size() == kHeaderSize + 8) {
            size = qFromBigEndian<qint64>(header.constData() + kHeaderSize);
        } else if (size == 0) {
            return true; // up to the end, wherever that is
        }
        if (size < kHeaderSize || size > file.size() - position) {
            return false;
        }
        position += size;
    }
    return true;
}

} // namespace

InputContextPtr openMovieFile(const QString &path)
{
    // The prefix keeps a colon in the name from being taken for a protocol.
    const auto name = QByteArrayLiteral("file:") + QFile::encodeName(path);
    AVFormatContext *context = nullptr;
    checked(avformat_open_input(&context, name.constData(), av_find_input_format("mov"), nullptr),
            readFailureText(path));
    InputContextPtr input(context);
    checked(avformat_find_stream_info(context, nullptr), readFailureText(path));
    return input;
}

bool readPacket(AVFormatContext &context, const QString &path, AVPacket &packet)
{
    av_packet_unref(&packet);
    const int result = av_read_frame(&context, &packet);
    if (result == AVERROR_EOF) {
        if (!isWhole(path)) {
            throwDamaged(path);
        }
        return false;
    }
    checked(result, readFailureText(path));
    if ((packet.flags & AV_PKT_FLAG_CORRUPT) != 0) {
        throwDamaged(path);
    }
    return true;
}

void readOnly(AVFormatContext &context, int stream)
{
    for (unsigned i = 0; i < context.nb_streams; ++i) {
        if (static_cast<int>(i) != stream) {
            context.streams[i]->discard = AVDISCARD_ALL;
        }
    }
}

} // namespace zivra::desktop
