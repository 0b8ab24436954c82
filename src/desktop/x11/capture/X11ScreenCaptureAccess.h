#pragma once

#include "desktop/x11/XcbConnection.h"
#include "desktop/x11/capture/ServerFeatures.h"
#include "platform/Authorization.h"
#include "platform/PlatformError.h"

namespace zivra::desktop {

/// Every client of an X server may capture it, as far as the server offers what that takes.
class X11ScreenCaptureAccess final : public ScreenCaptureAccess {
public:
    [[nodiscard]] bool preflight() const override
    {
        try {
            return missingServerFeatures(XcbConnection()).isEmpty();
        } catch (const PlatformError &) {
            return false;
        }
    }
    /// There is nobody to ask.
    void request() override {}
};

} // namespace zivra::desktop
