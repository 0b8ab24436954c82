#include "desktop/camera/V4L2Cameras.h"

#include "desktop/camera/CameraThread.h"
#include "desktop/camera/V4L2Device.h"
#include "desktop/camera/V4L2Reader.h"

#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <utility>

namespace zivra::desktop {

namespace {

const auto kPrefix = QStringLiteral("v4l2:");
/// The files of a camera come several at a time, and get their rights a little later.
constexpr int kSettlingTime = 150; // milliseconds

/// Whether any of the changes that wait there is of a video device.
bool readsVideoChange(int descriptor)
{
    alignas(inotify_event) std::array<char, 4096> bytes{};
    bool isFound = false;
    ssize_t length = 0;
    while ((length = read(descriptor, bytes.data(), bytes.size())) > 0) {
        for (ssize_t at = 0; at < length;) {
            inotify_event event{};
            std::memcpy(&event, bytes.data() + at, sizeof event);
            const char *name = bytes.data() + at + sizeof event;
            isFound = isFound || (event.len > 0 && std::strncmp(name, "video", 5) == 0);
            at += static_cast<ssize_t>(sizeof event + event.len);
        }
    }
    return isFound;
}

std::vector<CaptureDevice> devicesOf(const std::vector<V4L2Camera> &cameras)
{
    std::vector<CaptureDevice> devices;
    devices.reserve(cameras.size());
    for (const V4L2Camera &camera : cameras) {
        devices.push_back(camera.device);
    }
    return devices;
}

} // namespace

V4L2Cameras::V4L2Cameras(std::shared_ptr<V4L2System> system, const QString &folder)
    : m_system(std::move(system)),
      m_changes(inotify_init1(IN_CLOEXEC | IN_NONBLOCK)),
      m_wakeUp(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    inotify_add_watch(m_changes, folder.toLocal8Bit().constData(), IN_CREATE | IN_DELETE | IN_ATTRIB);
    m_thread = std::thread([this] { watch(); });
}

V4L2Cameras::~V4L2Cameras()
{
    eventfd_write(m_wakeUp, 1);
    m_thread.join();
    close(m_wakeUp);
    close(m_changes);
}

void V4L2Cameras::watch()
{
    pthread_setname_np(pthread_self(), "zivra.cameras");
    std::array<pollfd, 2> descriptors{{{m_wakeUp, POLLIN, 0}, {m_changes, POLLIN, 0}}};
    bool isStale = true;
    for (;;) {
        if (isStale) {
            m_list.replace(devicesOf(findV4L2Cameras(m_system)));
            isStale = false;
        }
        poll(descriptors.data(), descriptors.size(), -1);
        while (descriptors[0].revents == 0 && readsVideoChange(m_changes)) {
            isStale = true;
            poll(descriptors.data(), 1, kSettlingTime);
        }
        if (descriptors[0].revents != 0) {
            return;
        }
    }
}

std::unique_ptr<CaptureSource> V4L2Cameras::makeSource(const QString &deviceID, QSize size)
{
    return deviceID.startsWith(kPrefix)
               ? std::make_unique<CameraThread>(std::make_unique<V4L2Reader>(m_system, deviceID, size))
               : nullptr;
}

} // namespace zivra::desktop
