#pragma once

#include <QString>

#include <exception>
#include <stdexcept>

namespace zivra {

/// A failure that the desktop reported, in words fit for a user. `what()` is the same text in UTF-8.
class PlatformError : public std::runtime_error {
public:
    explicit PlatformError(const QString &text) : std::runtime_error(text.toStdString()) {}

    [[nodiscard]] QString text() const { return QString::fromUtf8(what()); }
};

/// The text of any exception of ours or of the standard library; empty for a null pointer.
inline QString errorText(const std::exception_ptr &error)
{
    if (!error) {
        return {};
    }
    try {
        std::rethrow_exception(error);
    } catch (const std::exception &exception) {
        return QString::fromUtf8(exception.what());
    } catch (...) {
        return QStringLiteral("Unknown error");
    }
}

} // namespace zivra
