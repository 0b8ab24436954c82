#pragma once

#include <QLatin1String>
#include <QString>

#include <array>
#include <optional>

namespace zivra {

// The choices of a recording. Raw values are what the preferences store; they never change.

enum class RecordingMode {
    ScreenAndCamera, ///< the screen, with the camera in a bubble
    ScreenOnly,
    CameraOnly, ///< camera and microphone alone
};

enum class CaptureArea {
    FullScreen, ///< a whole display
    Window,
    CustomArea, ///< a rectangle that the user draws for each recording
};

/// The underlying value is the greatest height of the movie in pixels.
enum class VideoQuality { Low = 480, Medium = 720, High = 1080 };

enum class BubbleSize { Small, Medium, Large };

inline constexpr std::array kAllRecordingModes = {RecordingMode::ScreenAndCamera, RecordingMode::ScreenOnly,
                                                  RecordingMode::CameraOnly};
inline constexpr std::array kAllCaptureAreas = {CaptureArea::FullScreen, CaptureArea::Window,
                                                CaptureArea::CustomArea};
inline constexpr std::array kAllVideoQualities = {VideoQuality::Low, VideoQuality::Medium,
                                                  VideoQuality::High};
inline constexpr std::array kAllBubbleSizes = {BubbleSize::Small, BubbleSize::Medium, BubbleSize::Large};

[[nodiscard]] QLatin1String rawValue(RecordingMode mode);
[[nodiscard]] QLatin1String rawValue(CaptureArea area);
[[nodiscard]] constexpr int rawValue(VideoQuality quality)
{
    return static_cast<int>(quality);
}
[[nodiscard]] QLatin1String rawValue(BubbleSize size);

// Absent for what is no raw value.
[[nodiscard]] std::optional<RecordingMode> recordingModeFromRawValue(const QString &raw);
[[nodiscard]] std::optional<CaptureArea> captureAreaFromRawValue(const QString &raw);
[[nodiscard]] std::optional<VideoQuality> videoQualityFromRawValue(qint64 raw);
[[nodiscard]] std::optional<BubbleSize> bubbleSizeFromRawValue(const QString &raw);

/// What the user reads.
[[nodiscard]] QString label(VideoQuality quality);

} // namespace zivra
