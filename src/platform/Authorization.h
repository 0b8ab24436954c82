#pragma once

#include "platform/MediaSample.h"

#include <QFuture>

namespace zivra {

enum class AuthorizationStatus { NotDetermined, Restricted, Denied, Authorized };

/// Whether this user may use cameras and microphones. Main thread only.
class MediaAuthorization {
public:
    virtual ~MediaAuthorization() = default;

    [[nodiscard]] virtual AuthorizationStatus authorizationStatus(MediaType type) const = 0;
    /// Asks the user where the desktop can; the result is the answer.
    [[nodiscard]] virtual QFuture<bool> requestAccess(MediaType type) = 0;
};

/// Whether the screen may be captured. Main thread only.
class ScreenCaptureAccess {
public:
    virtual ~ScreenCaptureAccess() = default;

    /// Never prompts.
    [[nodiscard]] virtual bool preflight() const = 0;
    /// Shows the desktop's own request where it has one.
    virtual void request() = 0;
};

} // namespace zivra
