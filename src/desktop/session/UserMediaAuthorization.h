#pragma once

#include "platform/Authorization.h"

#include <functional>

namespace zivra::desktop {

/// What decides over cameras and microphones on this machine.
struct MediaAccess {
    QString deviceFolder; ///< /dev
    /// Whether this user may read and write the device at the path.
    std::function<bool(const QString &)> mayOpen;
    /// Whether a sound server waits for us.
    std::function<bool()> hasSoundServer;
};

/// The rights of this user on device files: a Linux desktop has no other say, and nobody to ask.
///
/// Without any device there is nothing to be denied. A sound server opens microphones in our place.
class UserMediaAuthorization final : public MediaAuthorization {
public:
    explicit UserMediaAuthorization(MediaAccess access = thisMachine());

    [[nodiscard]] static MediaAccess thisMachine();

    [[nodiscard]] AuthorizationStatus authorizationStatus(MediaType type) const override;
    [[nodiscard]] QFuture<bool> requestAccess(MediaType type) override;

private:
    MediaAccess m_access;
};

} // namespace zivra::desktop
