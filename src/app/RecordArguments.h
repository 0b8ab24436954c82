#pragma once

#include "settings/RecordingChoices.h"

#include <QRectF>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <optional>
#include <stdexcept>

namespace zivra {

/// The arguments could not be understood; `what()` is one line for the user.
class ArgumentError : public std::runtime_error {
public:
    explicit ArgumentError(const QString &line) : std::runtime_error(line.toStdString()) {}
};

/// What `zivra record` was told on the command line.
struct RecordArguments {
    std::optional<double> seconds;
    RecordingMode mode = RecordingMode::ScreenOnly;
    CaptureArea area = CaptureArea::FullScreen;
    std::uint32_t windowID = 0;
    std::uint32_t displayID = 0;     ///< 0: the display under the mouse
    std::optional<QRectF> rectangle; ///< points, origin at the display's top left
    VideoQuality quality = VideoQuality::High;
    bool systemAudio = false;
    bool microphone = false;
    QString microphoneID; ///< empty: the default one
    QString cameraID;     ///< empty: the default one
    bool clicks = false;

    /// Reads what follows the word "record". Throws `ArgumentError`.
    [[nodiscard]] static RecordArguments parse(const QStringList &arguments);
};

} // namespace zivra
