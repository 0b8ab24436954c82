#pragma once

#include <QString>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace zivra::desktop {

/// What the kernel offers of Video4Linux, call by call, so that what is done with it runs without a device.
/// Any thread. Failures are told like those of the system calls: -1 or null, and `errno`.
class V4L2System {
public:
    struct Node {
        QString path;
        QString persistentName; ///< the same wherever the device is plugged in; empty where there is none
    };

    virtual ~V4L2System() = default;

    /// The device files, in the order of their numbers.
    [[nodiscard]] virtual std::vector<Node> nodes() const = 0;
    /// For reading and writing, without ever waiting.
    virtual int open(const QString &path) = 0;
    virtual void close(int descriptor) = 0;
    virtual int control(int descriptor, unsigned long request, void *argument) = 0;
    virtual std::uint8_t *map(int descriptor, std::size_t length, std::int64_t offset) = 0;
    virtual void unmap(std::uint8_t *memory, std::size_t length) = 0;
    /// Waits for a picture. What poll() tells of the descriptor: 0 when `wakeUp` came first.
    virtual short wait(int descriptor, int wakeUp) = 0;
};

[[nodiscard]] std::shared_ptr<V4L2System> makeKernelV4L2();

} // namespace zivra::desktop
