#include "desktop/camera/V4L2Reader.h"

#include "desktop/threads/MonotonicTime.h"
#include "platform/PlatformError.h"

#include <linux/videodev2.h>
#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace zivra::desktop {

namespace {

constexpr std::uint32_t kBuffers = 4;
constexpr std::uint32_t kRate = 30; // pictures a second
/// Closer together than this they are more than 30 a second, an uneven pace allowed for.
constexpr auto kLeastInterval = MediaTime::fromMilliseconds(25);

[[noreturn]] void fail(const QString &what)
{
    throw PlatformError(what);
}

v4l2_buffer bufferRequest(std::uint32_t index)
{
    v4l2_buffer buffer{};
    buffer.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    buffer.memory = V4L2_MEMORY_MMAP;
    buffer.index = index;
    return buffer;
}

/// When the picture was taken, where the driver says so on our clock; else now.
MediaTime timeOf(const v4l2_buffer &buffer)
{
    constexpr std::int64_t kSecond = 1'000'000'000; // nanoseconds
    constexpr std::int64_t kMicrosecond = 1000;
    if ((buffer.flags & V4L2_BUF_FLAG_TIMESTAMP_MASK) == V4L2_BUF_FLAG_TIMESTAMP_MONOTONIC) {
        return MediaTime::fromNanoseconds(buffer.timestamp.tv_sec * kSecond +
                                          buffer.timestamp.tv_usec * kMicrosecond);
    }
    return monotonicTime();
}

} // namespace

V4L2Reader::V4L2Reader(std::shared_ptr<V4L2System> system, QString deviceID, QSize wished)
    : m_system(std::move(system)),
      m_deviceID(std::move(deviceID)),
      m_wished(wished)
{
}

V4L2Reader::~V4L2Reader()
{
    if (m_device) {
        int type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
        static_cast<void>(m_device->control(VIDIOC_STREAMOFF, &type));
    }
    for (const Buffer &buffer : m_buffers) {
        m_system->unmap(buffer.memory, buffer.length);
    }
}

void V4L2Reader::open()
{
    // Its file may have changed since it was listed.
    const auto cameras = findV4L2Cameras(m_system);
    const auto found = std::ranges::find_if(
        cameras, [this](const V4L2Camera &camera) { return camera.device.uniqueID == m_deviceID; });
    if (found == cameras.end()) {
        fail(QStringLiteral("The camera isn’t there any more."));
    }
    m_device.emplace(m_system, found->path);
    setFormat();
    shareBuffers();
    int type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    if (!m_device->control(VIDIOC_STREAMON, &type)) {
        fail(QStringLiteral("The camera “%1” is in use.").arg(found->device.name));
    }
}

void V4L2Reader::setFormat()
{
    const auto mode = chooseMode(m_device->modes(), m_wished);
    v4l2_format format{};
    format.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    if (mode) {
        format.fmt.pix.width = static_cast<std::uint32_t>(mode->size.width());
        format.fmt.pix.height = static_cast<std::uint32_t>(mode->size.height());
        format.fmt.pix.pixelformat = fourccOf(mode->pixels);
        format.fmt.pix.field = V4L2_FIELD_NONE;
    }
    if (!mode || !m_device->control(VIDIOC_S_FMT, &format)) {
        fail(QStringLiteral("The camera is in use."));
    }
    // The driver answers with what it will do.
    const auto pixels = pixelsOf(format.fmt.pix.pixelformat);
    if (!pixels) {
        fail(QStringLiteral("The camera’s pictures are of an unknown kind."));
    }
    m_format = {.pixels = *pixels,
                .size = {static_cast<int>(format.fmt.pix.width), static_cast<int>(format.fmt.pix.height)},
                .stride = static_cast<int>(format.fmt.pix.bytesperline),
                .bytes = {}};
    v4l2_streamparm pace{};
    pace.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    pace.parm.capture.timeperframe = {1, kRate};
    static_cast<void>(m_device->control(VIDIOC_S_PARM, &pace)); // some can't be told
}

void V4L2Reader::shareBuffers()
{
    v4l2_requestbuffers request{};
    request.count = kBuffers;
    request.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    request.memory = V4L2_MEMORY_MMAP;
    if (!m_device->control(VIDIOC_REQBUFS, &request) || request.count == 0) {
        fail(QStringLiteral("The camera is in use."));
    }
    for (std::uint32_t index = 0; index < request.count; ++index) {
        v4l2_buffer buffer = bufferRequest(index);
        std::uint8_t *memory = nullptr;
        if (m_device->control(VIDIOC_QUERYBUF, &buffer)) {
            memory = m_system->map(m_device->descriptor(), buffer.length, buffer.m.offset);
        }
        if (memory == nullptr) {
            fail(QStringLiteral("There is no memory for the camera’s pictures."));
        }
        m_buffers.push_back({memory, buffer.length});
        if (!queueBuffer(index)) {
            fail(QStringLiteral("The camera doesn’t work."));
        }
    }
}

bool V4L2Reader::queueBuffer(std::uint32_t index) const
{
    v4l2_buffer buffer = bufferRequest(index);
    return m_device->control(VIDIOC_QBUF, &buffer);
}

std::optional<MediaSample> V4L2Reader::next(int wakeUp)
{
    const auto unplugged = QStringLiteral("The camera was unplugged.");
    const short events = m_system->wait(m_device->descriptor(), wakeUp);
    if (events == 0) {
        return std::nullopt;
    }
    v4l2_buffer buffer = bufferRequest(0);
    if (!m_device->control(VIDIOC_DQBUF, &buffer)) {
        if (errno == EAGAIN && (events & (POLLERR | POLLHUP)) == 0) {
            return std::nullopt;
        }
        fail(unplugged);
    }
    std::optional<MediaSample> sample;
    if ((buffer.flags & V4L2_BUF_FLAG_ERROR) == 0) {
        sample = sampleFrom(buffer.index, buffer.bytesused, timeOf(buffer));
    }
    if (!queueBuffer(buffer.index)) {
        fail(unplugged);
    }
    return sample;
}

std::optional<MediaSample> V4L2Reader::sampleFrom(std::uint32_t index, std::size_t bytes, MediaTime time)
{
    if (m_lastTime.isValid() && time < m_lastTime + kLeastInterval) {
        return std::nullopt;
    }
    const Buffer &buffer = m_buffers.at(index);
    RawPicture raw = m_format;
    raw.bytes = {buffer.memory, std::min(bytes, buffer.length)};
    const auto picture = m_converter.convert(raw);
    if (!picture) {
        return std::nullopt;
    }
    m_lastTime = time;
    return MediaSample(picture, {time, MediaTime::invalid(), MediaTime::invalid()}, FrameStatus::Complete);
}

} // namespace zivra::desktop
