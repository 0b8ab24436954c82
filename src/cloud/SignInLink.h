#pragma once

#include <QString>
#include <QUrl>

#include <optional>

namespace zivra {

/// A fresh state for one sign-in: 24 bytes of the system's secure random source in URL-safe Base64 without
/// padding, which makes 32 characters.
[[nodiscard]] QString randomSignInState();

/// The page of the server on which the user signs in; `server` is a normalized one.
[[nodiscard]] QUrl signInPage(const QUrl &server, const QString &state, const QString &computerName);

/// The token that a `zivra://auth` URL brings for the sign-in with that state. Of several items with one
/// name the first counts. Absent without a state, with another one, or with a token that is empty or no
/// token: one with control characters, or longer than servers take in a header (8 KiB).
[[nodiscard]] std::optional<QString> tokenOfCallback(const QUrl &url, const QString &expectedState);

/// What a user has pasted, without the blanks around it and the line breaks that a terminal put into it.
/// Empty when nothing is left.
[[nodiscard]] QString pastedToken(const QString &text);

} // namespace zivra
