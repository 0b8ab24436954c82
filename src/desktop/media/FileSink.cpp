#include "desktop/media/FileSink.h"

#include "platform/PlatformError.h"

#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <new>

extern "C" {
#include <libavformat/avio.h>
#include <libavutil/mem.h>
}

namespace zivra::desktop {

namespace {

constexpr int kBufferSize = 1 << 16; // bytes

QString creationFailureText(const QString &path, int error)
{
    if (error == EEXIST) {
        return QStringLiteral("“%1” already exists.").arg(QFileInfo(path).fileName());
    }
    return QStringLiteral("“%1” can’t be created: %2.").arg(path, qt_error_string(error));
}

} // namespace

void FileSink::IoDeleter::operator()(AVIOContext *context) const
{
    av_freep(&context->buffer);
    avio_context_free(&context);
}

FileSink::FileSink(const QString &path)
    : m_descriptor(::open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666)),
      m_sync(m_descriptor, path)
{
    if (m_descriptor < 0) {
        throw PlatformError(creationFailureText(path, errno));
    }
    static_cast<void>(flock(m_descriptor, LOCK_EX | LOCK_NB)); // nobody else knows of the file yet
    auto *buffer = static_cast<std::uint8_t *>(av_malloc(kBufferSize));
    m_io.reset(avio_alloc_context(buffer, kBufferSize, 1, this, nullptr, &FileSink::writeCallback,
                                  &FileSink::seekCallback));
    if (!m_io) {
        av_free(buffer);
        ::close(m_descriptor);
        throw std::bad_alloc();
    }
}

FileSink::~FileSink()
{
    m_sync.finish();
    if (m_descriptor >= 0) {
        ::close(m_descriptor);
    }
}

void FileSink::commit()
{
    avio_flush(m_io.get());
    if (m_failure == 0 && !m_discarding) {
        m_committed = avio_tell(m_io.get());
    }
}

void FileSink::close()
{
    if (m_descriptor < 0) {
        return;
    }
    m_sync.request();
    const int syncFailure = m_sync.finish();
    if (m_failure == 0) {
        m_failure = syncFailure;
    }
    if (::close(m_descriptor) != 0 && m_failure == 0) {
        m_failure = errno;
    }
    m_descriptor = -1;
}

int FileSink::writeCallback(void *sink, std::uint8_t *data, int size)
{
    return static_cast<FileSink *>(sink)->write(data, size);
}

std::int64_t FileSink::seekCallback(void *sink, std::int64_t offset, int whence)
{
    const int descriptor = static_cast<FileSink *>(sink)->m_descriptor;
    if ((whence & AVSEEK_SIZE) != 0) {
        return AVERROR(ENOSYS);
    }
    const auto position = ::lseek(descriptor, offset, whence & ~AVSEEK_FORCE);
    return position < 0 ? AVERROR(errno) : position;
}

int FileSink::write(const std::uint8_t *data, int size)
{
    if (m_discarding || m_failure != 0) {
        return AVERROR(EIO);
    }
    for (int done = 0; done < size;) {
        const auto written = ::write(m_descriptor, data + done, static_cast<std::size_t>(size - done));
        if (written >= 0) {
            done += static_cast<int>(written);
        } else if (errno != EINTR) {
            fail(errno);
            return AVERROR(m_failure);
        }
    }
    return size;
}

void FileSink::fail(int error)
{
    m_failure = error;
    // At once, not at the end: the file is whole even if the process does not live until then.
    if (::ftruncate(m_descriptor, m_committed) != 0) {
        m_discarding = true;
    }
}

QString writeFailureText(int error)
{
    switch (error) {
    case ENOSPC:
    case EDQUOT:
        return QStringLiteral("The disk is full.");
    case EFBIG:
        return QStringLiteral("The file has reached the largest size that is allowed.");
    default:
        return QStringLiteral("The file can’t be written: %1.").arg(qt_error_string(error));
    }
}

} // namespace zivra::desktop
