#include "settings/RecordingChoices.h"

#include <algorithm>

namespace zivra {

namespace {

template <typename Choice, std::size_t count, typename Raw>
std::optional<Choice> choiceWithRawValue(const std::array<Choice, count> &choices, const Raw &raw)
{
    const auto found = std::ranges::find_if(choices, [&](Choice choice) { return raw == rawValue(choice); });
    return found != choices.end() ? std::optional(*found) : std::nullopt;
}

} // namespace

QLatin1String rawValue(RecordingMode mode)
{
    switch (mode) {
    case RecordingMode::ScreenAndCamera:
        return QLatin1String("screenAndCamera");
    case RecordingMode::ScreenOnly:
        return QLatin1String("screenOnly");
    case RecordingMode::CameraOnly:
        return QLatin1String("cameraOnly");
    }
    Q_UNREACHABLE();
}

QLatin1String rawValue(CaptureArea area)
{
    switch (area) {
    case CaptureArea::FullScreen:
        return QLatin1String("fullScreen");
    case CaptureArea::Window:
        return QLatin1String("window");
    case CaptureArea::CustomArea:
        return QLatin1String("customArea");
    }
    Q_UNREACHABLE();
}

QLatin1String rawValue(BubbleSize size)
{
    switch (size) {
    case BubbleSize::Small:
        return QLatin1String("small");
    case BubbleSize::Medium:
        return QLatin1String("medium");
    case BubbleSize::Large:
        return QLatin1String("large");
    }
    Q_UNREACHABLE();
}

std::optional<RecordingMode> recordingModeFromRawValue(const QString &raw)
{
    return choiceWithRawValue(kAllRecordingModes, raw);
}

std::optional<CaptureArea> captureAreaFromRawValue(const QString &raw)
{
    return choiceWithRawValue(kAllCaptureAreas, raw);
}

std::optional<VideoQuality> videoQualityFromRawValue(qint64 raw)
{
    return choiceWithRawValue(kAllVideoQualities, raw);
}

std::optional<BubbleSize> bubbleSizeFromRawValue(const QString &raw)
{
    return choiceWithRawValue(kAllBubbleSizes, raw);
}

QString label(VideoQuality quality)
{
    switch (quality) {
    case VideoQuality::Low:
        return QStringLiteral("Low (480p)");
    case VideoQuality::Medium:
        return QStringLiteral("Med (720p)");
    case VideoQuality::High:
        return QStringLiteral("High (1080p)");
    }
    Q_UNREACHABLE();
}

} // namespace zivra
