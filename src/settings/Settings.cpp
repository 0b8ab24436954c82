#include "settings/Settings.h"

#include <QJsonValue>

#include <limits>
#include <type_traits>
#include <utility>

namespace zivra {

namespace {

constexpr auto kShortcutsKey = "shortcuts";

/// How a property is stored: a choice as its raw value, shortcuts as an object, everything else as it is.
template <typename Value>
QJsonValue stored(const Value &value)
{
    if constexpr (std::is_enum_v<Value>) {
        return rawValue(value);
    } else if constexpr (std::is_same_v<Value, quint32>) {
        return qint64{value};
    } else if constexpr (std::is_same_v<Value, ShortcutOverrides>) {
        return encodedShortcuts(value);
    } else {
        return value;
    }
}

quint32 decodedDisplayID(const QJsonValue &value)
{
    const qint64 number = value.toInteger(0);
    return number >= 0 && number <= std::numeric_limits<quint32>::max() ? static_cast<quint32>(number) : 0;
}

} // namespace

Settings::Settings(UserDefaults &defaults, QObject *parent) : QObject(parent), m_defaults(defaults)
{
    load();
    // The window of an earlier run is gone.
    if (m_captureArea == CaptureArea::Window) {
        setCaptureArea(CaptureArea::FullScreen);
    }
}

void Settings::load()
{
    const auto value = [this](const char *key) { return m_defaults.value(QLatin1String(key)); };
    m_mode = recordingModeFromRawValue(value("mode").toString()).value_or(m_mode);
    m_captureArea = captureAreaFromRawValue(value("captureArea").toString()).value_or(m_captureArea);
    m_displayID = decodedDisplayID(value("displayID"));
    m_cameraID = value("cameraID").toString();
    m_micID = value("micID").toString();
    m_cameraEnabled = value("cameraEnabled").toBool(m_cameraEnabled);
    m_micEnabled = value("micEnabled").toBool(m_micEnabled);
    m_systemAudio = value("systemAudio").toBool(m_systemAudio);
    m_quality = videoQualityFromRawValue(value("quality").toInteger()).value_or(m_quality);
    m_countdown = value("countdown").toBool(m_countdown);
    m_highlightClicks = value("highlightClicks").toBool(m_highlightClicks);
    m_mirrorCamera = value("mirrorCamera").toBool(m_mirrorCamera);
    m_bubbleSize = bubbleSizeFromRawValue(value("bubbleSize").toString()).value_or(m_bubbleSize);
    m_countdownSeconds = value("countdownSeconds").toInt(m_countdownSeconds);
    m_showPanelOnLaunch = value("showPanelOnLaunch").toBool(m_showPanelOnLaunch);
    m_openLibraryAfterRecording = value("openLibraryAfterRecording").toBool(m_openLibraryAfterRecording);
    m_shortcutOverrides = decodedShortcuts(value(kShortcutsKey));
}

template <typename Value>
void Settings::assign(Value &member, const Value &value, const char *key, void (Settings::*changed)())
{
    Q_EMIT willChange();
    const bool differs = member != value;
    member = value;
    if (key != nullptr) {
        m_defaults.setValue(QLatin1String(key), stored(member));
    }
    if (differs) {
        Q_EMIT(this->*changed)();
    }
}

void Settings::setMode(RecordingMode mode)
{
    assign(m_mode, mode, "mode", &Settings::modeChanged);
}

void Settings::setCaptureArea(CaptureArea area)
{
    assign(m_captureArea, area, "captureArea", &Settings::captureAreaChanged);
}

void Settings::setDisplayID(quint32 displayID)
{
    assign(m_displayID, displayID, "displayID", &Settings::displayIDChanged);
}

void Settings::setWindowID(quint32 windowID)
{
    assign(m_windowID, windowID, nullptr, &Settings::windowIDChanged);
}

void Settings::setWindowTitle(const QString &title)
{
    assign(m_windowTitle, title, nullptr, &Settings::windowTitleChanged);
}

void Settings::setCameraID(const QString &uniqueID)
{
    assign(m_cameraID, uniqueID, "cameraID", &Settings::cameraIDChanged);
}

void Settings::setMicID(const QString &uniqueID)
{
    assign(m_micID, uniqueID, "micID", &Settings::micIDChanged);
}

void Settings::setCameraEnabled(bool enabled)
{
    assign(m_cameraEnabled, enabled, "cameraEnabled", &Settings::cameraEnabledChanged);
}

void Settings::setMicEnabled(bool enabled)
{
    assign(m_micEnabled, enabled, "micEnabled", &Settings::micEnabledChanged);
}

void Settings::setSystemAudio(bool recorded)
{
    assign(m_systemAudio, recorded, "systemAudio", &Settings::systemAudioChanged);
}

void Settings::setQuality(VideoQuality quality)
{
    assign(m_quality, quality, "quality", &Settings::qualityChanged);
}

void Settings::setCountdown(bool shown)
{
    assign(m_countdown, shown, "countdown", &Settings::countdownChanged);
}

void Settings::setHighlightClicks(bool highlighted)
{
    assign(m_highlightClicks, highlighted, "highlightClicks", &Settings::highlightClicksChanged);
}

void Settings::setMirrorCamera(bool mirrored)
{
    assign(m_mirrorCamera, mirrored, "mirrorCamera", &Settings::mirrorCameraChanged);
}

void Settings::setBubbleSize(BubbleSize size)
{
    assign(m_bubbleSize, size, "bubbleSize", &Settings::bubbleSizeChanged);
}

void Settings::setCountdownSeconds(int seconds)
{
    assign(m_countdownSeconds, seconds, "countdownSeconds", &Settings::countdownSecondsChanged);
}

void Settings::setShowPanelOnLaunch(bool shown)
{
    assign(m_showPanelOnLaunch, shown, "showPanelOnLaunch", &Settings::showPanelOnLaunchChanged);
}

void Settings::setOpenLibraryAfterRecording(bool opened)
{
    assign(m_openLibraryAfterRecording, opened, "openLibraryAfterRecording",
           &Settings::openLibraryAfterRecordingChanged);
}

RecordingMode Settings::effectiveMode() const
{
    const bool cameraIsOff = m_mode == RecordingMode::ScreenAndCamera && !m_cameraEnabled;
    return cameraIsOff ? RecordingMode::ScreenOnly : m_mode;
}

std::optional<Shortcut> Settings::shortcut(ShortcutAction action) const
{
    const auto changed = m_shortcutOverrides.find(rawValue(action));
    return changed != m_shortcutOverrides.end() ? changed->second : defaultShortcut(action);
}

void Settings::setShortcut(const std::optional<Shortcut> &shortcut, ShortcutAction action)
{
    ShortcutOverrides overrides = m_shortcutOverrides;
    if (shortcut) {
        for (const ShortcutAction other : kAllShortcutActions) {
            if (other != action && this->shortcut(other) == shortcut) {
                overrides[rawValue(other)] = std::nullopt;
            }
        }
    }
    overrides[rawValue(action)] = shortcut;
    assign(m_shortcutOverrides, overrides, kShortcutsKey, &Settings::shortcutsChanged);
}

void Settings::resetShortcuts()
{
    assign(m_shortcutOverrides, {}, kShortcutsKey, &Settings::shortcutsChanged);
}

} // namespace zivra
