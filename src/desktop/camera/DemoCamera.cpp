#include "desktop/camera/DemoCamera.h"

#include "desktop/camera/CameraThread.h"
#include "desktop/camera/DemoPicture.h"
#include "desktop/threads/MonotonicTime.h"

#include <poll.h>

#include <algorithm>
#include <ctime>

namespace zivra::desktop {

namespace {

constexpr std::int64_t kSecond = 1'000'000'000; // nanoseconds

class DemoReader final : public CameraReader {
public:
    explicit DemoReader(QSize size) : m_pool(size, kCameraPictures) {}

    void open() override { m_number = static_cast<std::int64_t>(monotonicTime().seconds() * kDemoRate); }

    std::optional<MediaSample> next(int wakeUp) override
    {
        const auto due = MediaTime::fromFraction(m_number + 1, kDemoRate);
        const std::int64_t left = std::max<std::int64_t>(0, (due - monotonicTime()).nanoseconds());
        const std::timespec timeout{left / kSecond, left % kSecond};
        pollfd descriptor{wakeUp, POLLIN, 0};
        if (ppoll(&descriptor, 1, &timeout, nullptr) != 0) {
            return std::nullopt;
        }
        // What a thread that was held up has missed is left out, as a camera would.
        m_number = std::max(m_number + 1, static_cast<std::int64_t>(monotonicTime().seconds() * kDemoRate));
        auto picture = m_pool.take();
        if (!picture) {
            return std::nullopt;
        }
        drawDemoPicture(*picture, m_number);
        const auto time = MediaTime::fromFraction(m_number, kDemoRate);
        return MediaSample(m_pool.wrap(std::move(picture)),
                           {time, MediaTime::invalid(), MediaTime::invalid()}, FrameStatus::Complete);
    }

private:
    FramePool m_pool;
    std::int64_t m_number = 0; ///< of the last picture
};

const auto kIdentifier = QStringLiteral("demo");

} // namespace

std::vector<CaptureDevice> DemoCamera::cameras() const
{
    return {{.uniqueID = kIdentifier, .name = QStringLiteral("Demo Camera")}};
}

void DemoCamera::setChangeHandler(std::function<void()> /*handler*/) {}

std::unique_ptr<CaptureSource> DemoCamera::makeSource(const QString &deviceID, QSize size)
{
    return deviceID == kIdentifier ? std::make_unique<CameraThread>(std::make_unique<DemoReader>(size))
                                   : nullptr;
}

} // namespace zivra::desktop
