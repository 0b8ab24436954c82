#pragma once

#include <QString>

#include <exception>
#include <optional>

namespace zivra {

/// Why a recording did not come about. Failures that the desktop reports are `PlatformError`s.
class ZivraError : public std::exception {
public:
    enum Case {
        cancelled, ///< the user called it off: never shown
        noDisplay,
        noWindow,
        screenPermission,
        cameraPermission,
        micPermission,
        recordingFailed,
    };

    explicit ZivraError(Case code) : m_code(code) {}

    [[nodiscard]] Case code() const { return m_code; }
    /// What happened, for the user.
    [[nodiscard]] QString errorDescription() const { return QString::fromUtf8(what()); }
    /// What the user can do about it.
    [[nodiscard]] std::optional<QString> recoverySuggestion() const;
    /// `errorDescription()` in UTF-8.
    [[nodiscard]] const char *what() const noexcept override;

    friend bool operator==(const ZivraError &a, const ZivraError &b) { return a.m_code == b.m_code; }

private:
    Case m_code;
};

} // namespace zivra
