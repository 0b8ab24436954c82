#pragma once

#include "desktop/x11/capture/SharedImage.h"
#include "desktop/x11/capture/WindowComposer.h"
#include "platform/ContentFilter.h"

#include <memory>
#include <vector>

namespace zivra::desktop {

/// Reads the picture that a filter lets through. Without windows to leave out that is the screen itself,
/// which costs the server least; otherwise it is put together window by window.
class ScreenGrabber {
public:
    /// `area` in pixels of the root window. Throws `PlatformError`.
    ScreenGrabber(const XcbConnection &connection, const ContentFilter &filter, QRect area);
    ~ScreenGrabber();
    ScreenGrabber(const ScreenGrabber &) = delete;
    ScreenGrabber &operator=(const ScreenGrabber &) = delete;

    /// Reads the picture of now. False when there is none now, and the one before still holds.
    [[nodiscard]] bool grab();
    [[nodiscard]] SharedImage &image() { return m_image; }
    [[nodiscard]] bool composesWindows() const { return m_composer != nullptr; }
    [[nodiscard]] bool hasLostItsWindow() const { return m_composer && m_composer->hasLostItsWindow(); }
    /// Those of the latest picture, when it is put together of them.
    [[nodiscard]] std::vector<xcb_window_t> shownWindows() const;

private:
    [[nodiscard]] bool grabPartOfScreen();

    const XcbConnection &m_connection;
    QRect m_area;
    SharedImage m_image;
    std::unique_ptr<WindowComposer> m_composer;
};

} // namespace zivra::desktop
