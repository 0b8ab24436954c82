#pragma once

#include "desktop/x11/capture/PictureContent.h"
#include "desktop/x11/capture/WindowComposer.h"

#include <cstdint>
#include <optional>
#include <set>
#include <vector>

namespace zivra::desktop {

/// Some windows and nothing else, on black, whole even where others cover them.
///
/// The picture goes along with the window that it is about: the first of them that a window manager manages.
/// It is held while that one is minimised; others (overlays) are just not there while they are hidden.
class WindowsContent final : public PictureContent {
public:
    /// `area` in pixels of the root window, as the windows stand now.
    WindowsContent(const XcbConnection &connection, QRect area, const std::vector<std::uint32_t> &windows);

    void note(ServerEvents::Kind kind, const xcb_generic_event_t &event) override;
    [[nodiscard]] bool mayHaveChanged() const override;
    [[nodiscard]] QRegion takeChanges() override;
    [[nodiscard]] bool read(SharedImage &image, const QRegion &region) override;
    [[nodiscard]] bool mustReadAgain() override;
    [[nodiscard]] bool isHeld() const override { return m_isHeld; }
    [[nodiscard]] QPoint origin() const override { return m_origin; }

private:
    /// A window of the list.
    struct Member {
        std::uint32_t window;
        bool isManaged = false; ///< else an overlay
        bool isGone = false;    ///< for good
    };

    void findMembers(const std::vector<std::uint32_t> &windows);
    [[nodiscard]] QRegion followWindows();
    /// The window that the picture is about; null when there is none any more.
    [[nodiscard]] const Member *followed() const;
    [[nodiscard]] bool isFollowedHidden() const;
    void follow(const std::vector<TopLevel> &stack, const std::vector<xcb_window_t> &tops);
    void redirect(const std::vector<TopLevel> &windows);

    const XcbConnection &m_connection;
    QPoint m_origin;
    WindowComposer m_composer;
    std::vector<Member> m_members;
    std::optional<QPoint> m_offset; ///< from the followed window's corner to the picture's
    std::set<xcb_window_t> m_redirected;
    bool m_areWindowsChanged = true;
    bool m_isHeld = false;
};

} // namespace zivra::desktop
