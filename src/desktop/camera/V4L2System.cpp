#include "desktop/camera/V4L2System.h"

#include <QCollator>
#include <QDir>

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace zivra::desktop {

namespace {

class KernelV4L2 final : public V4L2System {
public:
    [[nodiscard]] std::vector<Node> nodes() const override
    {
        QStringList names = QDir(QStringLiteral("/dev")).entryList({QStringLiteral("video*")}, QDir::System);
        QCollator byNumber;
        byNumber.setNumericMode(true);
        std::ranges::sort(names, byNumber);
        const QDir persistent(QStringLiteral("/dev/v4l/by-id"));
        const QFileInfoList links = persistent.entryInfoList(QDir::Files | QDir::System);
        std::vector<Node> nodes;
        for (const QString &name : names) {
            Node node{.path = QStringLiteral("/dev/") + name, .persistentName = {}};
            const auto link = std::ranges::find(links, node.path, &QFileInfo::symLinkTarget);
            if (link != links.end()) {
                node.persistentName = link->fileName();
            }
            nodes.push_back(std::move(node));
        }
        return nodes;
    }

    int open(const QString &path) override
    {
        return ::open(path.toLocal8Bit().constData(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    }
    void close(int descriptor) override { ::close(descriptor); }

    int control(int descriptor, unsigned long request, void *argument) override
    {
        int result = 0;
        do {
            result = ioctl(descriptor, request, argument);
        } while (result < 0 && errno == EINTR);
        return result;
    }

    std::uint8_t *map(int descriptor, std::size_t length, std::int64_t offset) override
    {
        void *memory = mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, offset);
        return memory != MAP_FAILED ? static_cast<std::uint8_t *>(memory) : nullptr;
    }
    void unmap(std::uint8_t *memory, std::size_t length) override { munmap(memory, length); }

    short wait(int descriptor, int wakeUp) override
    {
        std::array<pollfd, 2> descriptors{{{descriptor, POLLIN, 0}, {wakeUp, POLLIN, 0}}};
        poll(descriptors.data(), descriptors.size(), -1);
        return descriptors[0].revents;
    }
};

} // namespace

std::shared_ptr<V4L2System> makeKernelV4L2()
{
    return std::make_shared<KernelV4L2>();
}

} // namespace zivra::desktop
