#pragma once

#include "desktop/x11/XcbConnection.h"
#include "platform/Screens.h"

namespace zivra::desktop {

/// The displays of an X server, asked for anew at each call, so that what it says is never out of date.
class X11Screens final : public Screens {
public:
    /// Connects to a display such as ":0"; empty stands for $DISPLAY. Throws `PlatformError`.
    explicit X11Screens(const QByteArray &displayName = {}) : m_connection(displayName) {}

    [[nodiscard]] std::vector<Screen> screens() const override;
    [[nodiscard]] QPointF mouseLocation() const override;

private:
    XcbConnection m_connection;
};

} // namespace zivra::desktop
