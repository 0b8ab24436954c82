#include "desktop/media/PlainMovie.h"

#include "desktop/media/FileBoxes.h"
#include "desktop/media/FragmentedMovie.h"
#include "desktop/media/MovieBoxes.h"
#include "desktop/media/PlainIndex.h"

#include <QFile>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <vector>

namespace zivra::desktop {

namespace {

class OpenFile {
public:
    explicit OpenFile(const QString &path)
        : m_descriptor(::open(QFile::encodeName(path).constData(), O_RDWR | O_CLOEXEC))
    {
    }
    ~OpenFile()
    {
        if (m_descriptor >= 0) {
            ::close(m_descriptor);
        }
    }
    OpenFile(const OpenFile &) = delete;
    OpenFile &operator=(const OpenFile &) = delete;

    /// Keeps everyone else who asks for it from writing the file, as long as this lives.
    [[nodiscard]] bool lock() const { return flock(m_descriptor, LOCK_EX | LOCK_NB) == 0; }
    [[nodiscard]] int descriptor() const { return m_descriptor; }
    [[nodiscard]] std::int64_t size() const
    {
        struct stat status {};
        return fstat(m_descriptor, &status) == 0 ? status.st_size : -1;
    }
    /// Writes all of it and waits until it is on the disk.
    [[nodiscard]] bool write(const std::vector<std::uint8_t> &bytes, std::int64_t offset) const
    {
        std::size_t done = 0;
        while (done < bytes.size()) {
            const auto written = pwrite(m_descriptor, bytes.data() + done, bytes.size() - done,
                                        offset + static_cast<std::int64_t>(done));
            if (written < 0 && errno != EINTR) {
                return false;
            }
            done += static_cast<std::size_t>(std::max<ssize_t>(written, 0));
        }
        return fdatasync(m_descriptor) == 0;
    }

private:
    int m_descriptor;
};

} // namespace

bool makePlainMovie(const QString &path)
{
    const OpenFile file(path);
    if (!file.lock()) {
        return false;
    }
    const std::int64_t end = file.size();
    const auto movie = end > 0 ? readFragmentedMovie(file.descriptor()) : std::nullopt;
    const auto index = movie ? plainIndex(*movie) : std::vector<std::uint8_t>();
    if (index.empty()) {
        return false;
    }
    BoxWriter trailer;
    trailer.copy(index);
    if (const auto mixed = mixedIndex(*movie); !mixed.empty()) {
        trailer.box(boxName("free"), [&] { trailer.copy(mixed); }); // see useReadyMix()
    }
    if (!file.write(trailer.bytes(), end)) {
        static_cast<void>(ftruncate(file.descriptor(), end));
        return false;
    }
    BoxWriter media; // ISO/IEC 14496-12, 4.2: 1 stands for a size of 64 bits behind the name
    media.u32(1);
    media.u32(boxName("mdat"));
    media.number(static_cast<std::uint64_t>(end - movie->indexOffset), 8);
    return file.write(media.bytes(), movie->indexOffset);
}

bool useReadyMix(const QString &path)
{
    const OpenFile file(path);
    if (!file.lock()) {
        return false;
    }
    FileView view(file.descriptor());
    const auto boxes = topLevelBoxes(view);
    if (boxes.size() < 3 || boxes.back().end() != view.fileSize()) {
        return false;
    }
    const FileBox media = *(boxes.end() - 3);
    const FileBox index = *(boxes.end() - 2);
    const FileBox unused = *(boxes.end() - 1);
    const auto mixed = view.box(unused.offset + unused.headerSize);
    const bool isReady = media.name == boxName("mdat") && media.headerSize == 16 &&
                         index.name == boxName("moov") && unused.name == boxName("free") && mixed &&
                         mixed->name == boxName("moov") && mixed->end() == unused.end();
    if (!isReady) {
        return false;
    }
    // The media ends where the other index starts, so that the first one lies within.
    const auto writeMediaSize = [&](std::int64_t size) {
        constexpr std::int64_t kSizeOffset = 8;
        BoxWriter writer;
        writer.number(static_cast<std::uint64_t>(size), 8);
        return file.write(writer.bytes(), media.offset + kSizeOffset);
    };
    if (!writeMediaSize(mixed->offset - media.offset)) {
        writeMediaSize(media.size);
        return false;
    }
    return true;
}

} // namespace zivra::desktop
