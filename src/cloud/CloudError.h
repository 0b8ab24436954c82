#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>

#include <optional>
#include <stdexcept>

namespace zivra {

/// What goes wrong between us and the cloud server. `what()` is the text for the user in UTF-8; what an
/// answer of the server means beyond its text is up to the caller.
class CloudError : public std::runtime_error {
public:
    enum Case {
        http,          ///< the server answered with a status outside of 200 to 299
        notConnected,  ///< nobody is signed in
        invalidServer, ///< the server's address is none
        badResponse,   ///< the server's answer is not what was agreed on
    };

    /// Not for `http`.
    explicit CloudError(Case code);
    /// An answer of that status; `message` is the server's own, if it sent one.
    CloudError(int status, const std::optional<QString> &message);

    [[nodiscard]] Case code() const { return m_code; }
    /// Of an `http` error, else 0.
    [[nodiscard]] int status() const { return m_status; }

private:
    Case m_code;
    int m_status = 0;
};

/// There was no answer: no network, nobody there, a time-out. The text is that of the HTTP client.
class TransportError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// What should be JSON is not. The text is the parser's.
class JsonError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The text for the user of any of these.
[[nodiscard]] inline QString userText(const std::exception &error)
{
    return QString::fromUtf8(error.what());
}

/// The object that an answer consists of. Throws `JsonError`, or a `badResponse` for anything but an object.
[[nodiscard]] QJsonObject jsonObject(const QByteArray &body);

} // namespace zivra
