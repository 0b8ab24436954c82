#pragma once

#include "desktop/media/DiskSync.h"

#include <QString>

#include <cstdint>
#include <memory>

struct AVIOContext;

namespace zivra::desktop {

/// A file of our own that a muxer writes to, locked (flock(2)) until it is closed. Remembers up to where the
/// file is whole, and after the first failed write takes nothing more and cuts the file back to there. Used
/// by one thread at a time.
class FileSink {
public:
    /// Creates the file; throws `PlatformError` when it exists or cannot be made.
    explicit FileSink(const QString &path);
    ~FileSink();
    FileSink(const FileSink &) = delete;
    FileSink &operator=(const FileSink &) = delete;

    [[nodiscard]] AVIOContext *io() const { return m_io.get(); }

    /// Hands everything buffered to the kernel and, if that went well, calls the file whole up to here.
    void commit();
    /// Lets what has been handed over get to the disk, and returns at once.
    void startSync() { m_sync.request(); }
    /// Nothing that is still buffered or comes later reaches the file.
    void discardFurtherData() { m_discarding = true; }
    /// Waits until the file's data is on the disk, and closes the file.
    void close();

    /// The `errno` of the write that failed; 0 while all went well.
    [[nodiscard]] int failure() const { return m_failure; }
    /// Bytes from the start of the file that are whole.
    [[nodiscard]] std::int64_t committedSize() const { return m_committed; }

private:
    struct IoDeleter {
        void operator()(AVIOContext *context) const;
    };

    static int writeCallback(void *sink, std::uint8_t *data, int size);
    static std::int64_t seekCallback(void *sink, std::int64_t offset, int whence);
    int write(const std::uint8_t *data, int size);
    void fail(int error);

    int m_descriptor = -1;
    DiskSync m_sync;
    std::unique_ptr<AVIOContext, IoDeleter> m_io;
    std::int64_t m_committed = 0;
    int m_failure = 0;
    bool m_discarding = false;
};

/// Why nothing more could be written, for an `errno` value of a failed write.
QString writeFailureText(int error);

} // namespace zivra::desktop
