#pragma once

#include "desktop/camera/V4L2System.h"

#include <linux/videodev2.h>
#include <poll.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <map>
#include <mutex>
#include <thread>

namespace zivra::desktop::test {

/// A kernel with cameras of the test's making, which behave as the interface's documentation says.
class FakeV4L2 final : public V4L2System {
public:
    struct Mode {
        std::uint32_t fourcc;
        std::uint32_t width;
        std::uint32_t height;
        std::uint32_t rate;
    };
    struct Camera {
        const char *card = "Desk Camera";
        std::uint32_t capabilities = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING;
        std::vector<Mode> modes{}; ///< those of a format one after the other
    };

    /// By the path.
    void setCameras(std::map<QString, Camera> cameras)
    {
        const std::lock_guard lock(m_mutex);
        m_cameras = std::move(cameras);
    }

    std::vector<std::uint8_t> picture; ///< what every buffer is filled with
    std::atomic<bool> isUnplugged = false;
    std::atomic<bool> isBusy = false;
    // What was asked for last, and what is still held.
    v4l2_pix_format format{};
    std::atomic<int> opened = 0;
    std::atomic<int> mapped = 0;

    [[nodiscard]] std::vector<Node> nodes() const override
    {
        std::vector<Node> all;
        const std::lock_guard lock(m_mutex);
        for (const auto &[path, camera] : m_cameras) {
            all.push_back({path, {}});
        }
        return all;
    }
    int open(const QString &path) override
    {
        ++opened;
        const std::lock_guard lock(m_mutex);
        m_open.push_back(path);
        return static_cast<int>(m_open.size()) - 1;
    }
    void close(int) override { --opened; }
    std::uint8_t *map(int, std::size_t length, std::int64_t) override
    {
        ++mapped;
        auto *memory = new std::uint8_t[length]; // the kernel's
        std::copy(picture.begin(), picture.end(), memory);
        return memory;
    }
    void unmap(std::uint8_t *memory, std::size_t) override
    {
        --mapped;
        delete[] memory;
    }
    short wait(int, int wakeUp) override
    {
        pollfd descriptor{wakeUp, POLLIN, 0};
        const bool isWoken = poll(&descriptor, 1, 33) > 0;
        return isWoken ? 0 : isUnplugged ? POLLERR : POLLIN;
    }

    int control(int descriptor, unsigned long request, void *argument) override
    {
        const Camera camera = cameraOf(descriptor);
        switch (request) {
        case VIDIOC_QUERYCAP: {
            auto &answer = *static_cast<v4l2_capability *>(argument);
            std::strcpy(reinterpret_cast<char *>(answer.card), camera.card);
            std::strcpy(reinterpret_cast<char *>(answer.bus_info), "usb-1");
            answer.capabilities = V4L2_CAP_DEVICE_CAPS;
            answer.device_caps = camera.capabilities;
            return 0;
        }
        case VIDIOC_ENUM_FMT: {
            auto &entry = *static_cast<v4l2_fmtdesc *>(argument);
            std::vector<std::uint32_t> formats;
            for (const Mode &mode : camera.modes) {
                formats.push_back(mode.fourcc);
            }
            formats.erase(std::unique(formats.begin(), formats.end()), formats.end());
            return answer(entry.index < formats.size(), [&] { entry.pixelformat = formats[entry.index]; });
        }
        case VIDIOC_ENUM_FRAMESIZES: {
            auto &entry = *static_cast<v4l2_frmsizeenum *>(argument);
            const auto modes = modesOf(camera, entry.pixel_format);
            return answer(entry.index < modes.size(), [&] {
                entry.type = V4L2_FRMSIZE_TYPE_DISCRETE;
                entry.discrete = {modes[entry.index].width, modes[entry.index].height};
            });
        }
        case VIDIOC_ENUM_FRAMEINTERVALS: {
            auto &entry = *static_cast<v4l2_frmivalenum *>(argument);
            const auto modes = modesOf(camera, entry.pixel_format);
            const auto mode = std::ranges::find(modes, entry.width, &Mode::width);
            return answer(entry.index == 0 && mode != modes.end(), [&] {
                entry.type = V4L2_FRMIVAL_TYPE_DISCRETE;
                entry.discrete = {1, mode->rate};
            });
        }
        case VIDIOC_S_FMT:
            format = static_cast<v4l2_format *>(argument)->fmt.pix;
            return answer(
                !isBusy, [] {}, EBUSY);
        case VIDIOC_REQBUFS:
            m_queued.clear();
            return 0;
        case VIDIOC_QUERYBUF:
            static_cast<v4l2_buffer *>(argument)->length = static_cast<std::uint32_t>(picture.size());
            return 0;
        case VIDIOC_QBUF:
            m_queued.push_back(static_cast<v4l2_buffer *>(argument)->index);
            return 0;
        case VIDIOC_DQBUF: {
            auto &buffer = *static_cast<v4l2_buffer *>(argument);
            return answer(
                !isUnplugged && !m_queued.empty(),
                [&] {
                    buffer.index = m_queued.front();
                    m_queued.erase(m_queued.begin());
                    buffer.bytesused = static_cast<std::uint32_t>(picture.size());
                    buffer.flags = V4L2_BUF_FLAG_TIMESTAMP_MONOTONIC;
                    m_time += 33'333;
                    buffer.timestamp = {m_time / 1'000'000, m_time % 1'000'000};
                },
                ENODEV);
        }
        default:
            return 0;
        }
    }

private:
    Camera cameraOf(int descriptor)
    {
        const std::lock_guard lock(m_mutex);
        return m_cameras.at(m_open.at(static_cast<std::size_t>(descriptor)));
    }
    static std::vector<Mode> modesOf(const Camera &camera, std::uint32_t fourcc)
    {
        std::vector<Mode> modes;
        std::ranges::copy_if(camera.modes, std::back_inserter(modes),
                             [fourcc](const Mode &mode) { return mode.fourcc == fourcc; });
        return modes;
    }
    template <typename Fill>
    static int answer(bool isGranted, Fill fill, int error = EINVAL)
    {
        if (!isGranted) {
            errno = error;
            return -1;
        }
        fill();
        return 0;
    }

    mutable std::mutex m_mutex;
    std::map<QString, Camera> m_cameras;
    std::vector<QString> m_open;
    std::vector<std::uint32_t> m_queued; ///< of the one camera that streams
    std::int64_t m_time = 0;             ///< microseconds
};

} // namespace zivra::desktop::test
