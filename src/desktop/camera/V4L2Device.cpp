#include "desktop/camera/V4L2Device.h"

#include "platform/PlatformError.h"

#include <linux/videodev2.h>

#include <algorithm>
#include <array>
#include <utility>

namespace zivra::desktop {

namespace {

constexpr std::array<std::pair<std::uint32_t, CameraPixels>, 4> kFormats{
    {{V4L2_PIX_FMT_YUYV, CameraPixels::Yuyv},
     {V4L2_PIX_FMT_NV12, CameraPixels::Nv12},
     {V4L2_PIX_FMT_MJPEG, CameraPixels::Mjpeg},
     {V4L2_PIX_FMT_XBGR32, CameraPixels::Bgrx}}};

/// Of sizes between bounds in steps, those that are asked for, and the greatest.
constexpr std::array<QSize, 3> kPresets{{{640, 480}, {1280, 720}, {1920, 1080}}};

template <std::size_t size>
QString textOf(const std::uint8_t (&field)[size])
{
    const auto *text = reinterpret_cast<const char *>(field);
    return QString::fromUtf8(text, static_cast<qsizetype>(qstrnlen(text, size))).trimmed();
}

std::vector<QSize> sizesWithin(const v4l2_frmsize_stepwise &range)
{
    std::vector<QSize> sizes{QSize(static_cast<int>(range.max_width), static_cast<int>(range.max_height))};
    const auto hits = [](int value, unsigned least, unsigned greatest, unsigned step) {
        const auto length = static_cast<unsigned>(value);
        return length >= least && length <= greatest && (length - least) % std::max(1U, step) == 0;
    };
    for (const QSize &preset : kPresets) {
        if (hits(preset.width(), range.min_width, range.max_width, range.step_width) &&
            hits(preset.height(), range.min_height, range.max_height, range.step_height)) {
            sizes.push_back(preset);
        }
    }
    return sizes;
}

} // namespace

std::optional<CameraPixels> pixelsOf(std::uint32_t fourcc)
{
    const auto found = std::ranges::find(kFormats, fourcc, &std::pair<std::uint32_t, CameraPixels>::first);
    return found != kFormats.end() ? std::optional(found->second) : std::nullopt;
}

std::uint32_t fourccOf(CameraPixels pixels)
{
    return std::ranges::find(kFormats, pixels, &std::pair<std::uint32_t, CameraPixels>::second)->first;
}

V4L2Device::V4L2Device(std::shared_ptr<V4L2System> system, const QString &path)
    : m_system(std::move(system)),
      m_descriptor(m_system->open(path))
{
    if (m_descriptor < 0) {
        throw PlatformError(QStringLiteral("The camera can’t be opened."));
    }
}

V4L2Device::~V4L2Device()
{
    m_system->close(m_descriptor);
}

std::optional<CaptureDevice> V4L2Device::camera(const QString &persistentName) const
{
    v4l2_capability capability{};
    if (!control(VIDIOC_QUERYCAP, &capability)) {
        return std::nullopt;
    }
    constexpr std::uint32_t kNeeded = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING;
    const std::uint32_t can = (capability.capabilities & V4L2_CAP_DEVICE_CAPS) != 0 ? capability.device_caps
                                                                                    : capability.capabilities;
    if ((can & kNeeded) != kNeeded || modes().empty()) {
        return std::nullopt;
    }
    const QString name = textOf(capability.card);
    const QString identity = persistentName.isEmpty()
                                 ? QStringLiteral("%1@%2").arg(name, textOf(capability.bus_info))
                                 : persistentName;
    return CaptureDevice{.uniqueID = QStringLiteral("v4l2:") + identity, .name = name};
}

std::vector<CameraMode> V4L2Device::modes() const
{
    std::vector<CameraMode> modes;
    v4l2_fmtdesc format{};
    format.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    for (; control(VIDIOC_ENUM_FMT, &format); ++format.index) {
        if (const auto pixels = pixelsOf(format.pixelformat)) {
            addSizes(modes, *pixels, format.pixelformat);
        }
    }
    return modes;
}

void V4L2Device::addSizes(std::vector<CameraMode> &modes, CameraPixels pixels, std::uint32_t fourcc) const
{
    v4l2_frmsizeenum entry{};
    entry.pixel_format = fourcc;
    for (; control(VIDIOC_ENUM_FRAMESIZES, &entry); ++entry.index) {
        const bool isDiscrete = entry.type == V4L2_FRMSIZE_TYPE_DISCRETE;
        const QSize only(static_cast<int>(entry.discrete.width), static_cast<int>(entry.discrete.height));
        for (const QSize &size : isDiscrete ? std::vector{only} : sizesWithin(entry.stepwise)) {
            modes.push_back({.pixels = pixels, .size = size, .rate = bestRate(fourcc, size)});
        }
        if (!isDiscrete) {
            break; // it is the only entry
        }
    }
}

double V4L2Device::bestRate(std::uint32_t fourcc, QSize size) const
{
    constexpr double kUnknown = 30;
    double best = 0;
    v4l2_frmivalenum entry{};
    entry.pixel_format = fourcc;
    entry.width = static_cast<std::uint32_t>(size.width());
    entry.height = static_cast<std::uint32_t>(size.height());
    for (; control(VIDIOC_ENUM_FRAMEINTERVALS, &entry); ++entry.index) {
        const bool isDiscrete = entry.type == V4L2_FRMIVAL_TYPE_DISCRETE;
        const v4l2_fract &interval = isDiscrete ? entry.discrete : entry.stepwise.min;
        if (interval.numerator > 0) {
            best = std::max(best, double(interval.denominator) / interval.numerator);
        }
        if (!isDiscrete) {
            break;
        }
    }
    return best > 0 ? best : kUnknown;
}

std::vector<V4L2Camera> findV4L2Cameras(const std::shared_ptr<V4L2System> &system)
{
    std::vector<V4L2Camera> cameras;
    for (const auto &node : system->nodes()) {
        try {
            if (auto device = V4L2Device(system, node.path).camera(node.persistentName)) {
                cameras.push_back({.device = std::move(*device), .path = node.path});
            }
        } catch (const PlatformError &) { // NOLINT(bugprone-empty-catch): in use, going, or not ours
        }
    }
    return cameras;
}

} // namespace zivra::desktop
