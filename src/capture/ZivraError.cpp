#include "capture/ZivraError.h"

namespace zivra {

std::optional<QString> ZivraError::recoverySuggestion() const
{
    switch (m_code) {
    case screenPermission:
        return QStringLiteral("Enable Zivra in System Settings › Privacy & Security › Screen & System Audio "
                              "Recording, then relaunch Zivra.");
    case cameraPermission:
        return QStringLiteral("Enable Zivra in System Settings › Privacy & Security › Camera.");
    case micPermission:
        return QStringLiteral("Enable Zivra in System Settings › Privacy & Security › Microphone.");
    case cancelled:
    case noDisplay:
    case noWindow:
    case recordingFailed:
        return std::nullopt;
    }
    Q_UNREACHABLE();
}

const char *ZivraError::what() const noexcept
{
    switch (m_code) {
    case cancelled:
        return "Cancelled.";
    case noDisplay:
        return "Couldn't find the display to record.";
    case noWindow:
        return "Choose a window to record first.";
    case screenPermission:
        return "Zivra needs Screen Recording permission.";
    case cameraPermission:
        return "Zivra needs Camera permission.";
    case micPermission:
        return "Zivra needs Microphone permission.";
    case recordingFailed:
        return "The recording couldn't be saved.";
    }
    Q_UNREACHABLE();
}

} // namespace zivra
