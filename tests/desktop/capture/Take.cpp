#include "desktop/capture/Take.h"

#include "desktop/x11/Monitors.h"
#include "desktop/x11/capture/X11PictureSourceFactory.h"
#include "platform/PlatformError.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace zivra::desktop {

namespace {

MediaSample copy(const MediaSample &sample)
{
    auto frame = std::make_shared<VideoFrame>(*sample.videoFrame());
    const auto planes = std::make_shared<std::array<std::vector<std::uint8_t>, 3>>();
    for (std::size_t i = 0; i < 3; ++i) {
        VideoFrame::Plane &plane = frame->planes.at(i);
        const int rows = i == 0 ? frame->height : frame->height / 2;
        planes->at(i).assign(plane.data, plane.data + std::ptrdiff_t{rows} * plane.stride);
        plane.data = planes->at(i).data();
    }
    frame->storage = planes;
    return {std::shared_ptr<const VideoFrame>(frame), sample.timing(), sample.frameStatus()};
}

} // namespace

QColor colourAt(const VideoFrame &frame, int x, int y)
{
    const double luma = 1.164 * (frame.planes[0].data[y * frame.planes[0].stride + x] - 16);
    const double blue = frame.planes[1].data[y / 2 * frame.planes[1].stride + x / 2] - 128;
    const double red = frame.planes[2].data[y / 2 * frame.planes[2].stride + x / 2] - 128;
    const auto channel = [](double value) {
        return std::clamp(static_cast<int>(std::lround(value)), 0, 255);
    };
    return {channel(luma + 1.596 * red), channel(luma - 0.813 * red - 0.391 * blue),
            channel(luma + 2.018 * blue)};
}

bool isNear(QColor colour, std::uint32_t expected)
{
    const QColor other = QColor::fromRgb(expected);
    return std::max({std::abs(colour.red() - other.red()), std::abs(colour.green() - other.green()),
                     std::abs(colour.blue() - other.blue())}) <= 6;
}

std::uint32_t firstDisplay(const QByteArray &displayName)
{
    const XcbConnection connection(displayName);
    return MonitorLayout(connection).monitors().front().displayID;
}

ContentFilter wholeDisplay(std::vector<std::uint32_t> without)
{
    return {ContentFilter::Kind::DisplayExcludingWindows, firstDisplay(), std::move(without)};
}

CaptureConfiguration configuration(QRectF area, int framesPerSecond)
{
    CaptureConfiguration configuration;
    configuration.sourceRect = area;
    configuration.outputSize = area.size().toSize();
    configuration.minimumFrameInterval = MediaTime::fromFraction(1, framesPerSecond);
    configuration.showsCursor = false;
    return configuration;
}

Take::Take(const ContentFilter &filter, const CaptureConfiguration &configuration,
           const QByteArray &displayName, Frames frames)
    : m_source(X11PictureSourceFactory(displayName).makePictureSource(filter, configuration))
{
    auto started = m_source->start(
        [this, frames](const MediaSample &sample) {
            const std::lock_guard lock(m_mutex);
            m_samples.push_back(frames == Frames::Held ? sample : copy(sample));
            m_news.notify_all();
        },
        [this](const std::exception_ptr &reason) {
            const std::lock_guard lock(m_mutex);
            m_end = reason;
            m_news.notify_all();
        });
    try {
        started.waitForFinished();
    } catch (const PlatformError &error) {
        m_startError = error.text();
    }
}

bool Take::stop()
{
    using namespace std::chrono;
    const auto begin = steady_clock::now();
    m_source->stop().waitForFinished();
    return steady_clock::now() - begin < milliseconds(500);
}

bool Take::waitFor(const Check &check, std::chrono::milliseconds limit)
{
    std::unique_lock lock(m_mutex);
    return m_news.wait_for(lock, limit, [&] {
        while (m_seen < m_samples.size()) {
            if (const auto frame = m_samples[m_seen++].videoFrame(); frame && check(*frame)) {
                return true;
            }
        }
        return false;
    });
}

bool Take::waitForColour(int x, int y, std::uint32_t colour)
{
    return waitFor([=](const VideoFrame &frame) { return isNear(colourAt(frame, x, y), colour); });
}

bool Take::waitForFrame()
{
    return waitFor([](const VideoFrame &) { return true; });
}

bool Take::waitForRepetition()
{
    return waitFor([](const VideoFrame &frame) { return frame.changed && frame.changed->empty(); });
}

bool Take::shows(int x, int y, std::uint32_t colour) const
{
    return isNear(colourAt(*samples().back().videoFrame(), x, y), colour);
}

QString Take::waitForEnd()
{
    std::unique_lock lock(m_mutex);
    m_news.wait_for(lock, std::chrono::seconds(5), [this] { return m_end != nullptr; });
    return errorText(m_end);
}

std::vector<MediaSample> Take::samples() const
{
    const std::lock_guard lock(m_mutex);
    return m_samples;
}

void Take::forgetFrames()
{
    std::vector<MediaSample> dropped;
    const std::lock_guard lock(m_mutex);
    for (MediaSample &sample : m_samples) {
        dropped.push_back(std::exchange(sample, MediaSample({}, sample.timing(), sample.frameStatus())));
    }
}

} // namespace zivra::desktop
