#pragma once

#include "desktop/x11/capture/ExcludedWindows.h"
#include "desktop/x11/capture/PictureContent.h"
#include "desktop/x11/capture/RootView.h"
#include "desktop/x11/capture/WindowComposer.h"
#include "platform/MediaTime.h"

#include <cstdint>
#include <memory>
#include <set>
#include <vector>

namespace zivra::desktop {

/// A part of the screen without some windows: what lies beneath them shows in their place.
///
/// While none of them is on that part the screen itself is read, which costs least; while one is, the picture
/// is put together out of the other windows, so that it never gets in.
class DisplayContent final : public PictureContent {
public:
    /// `area` in pixels of the root window. The filter tells the windows to be left out.
    DisplayContent(const XcbConnection &connection, QRect area, const ContentFilter &filter);

    void note(ServerEvents::Kind kind, const xcb_generic_event_t &event) override;
    [[nodiscard]] bool mayHaveChanged() const override;
    [[nodiscard]] QRegion takeChanges() override;
    [[nodiscard]] bool read(SharedImage &image, const QRegion &region) override;
    [[nodiscard]] bool mustReadAgain() override;
    [[nodiscard]] QPoint origin() const override { return m_area.topLeft(); }

private:
    [[nodiscard]] QRegion followWindows();
    [[nodiscard]] bool hidesOne(const std::vector<TopLevel> &stack);
    [[nodiscard]] std::vector<TopLevel> shown(const std::vector<TopLevel> &stack) const;
    void beginComposing(const std::vector<TopLevel> &stack);

    const XcbConnection &m_connection;
    QRect m_area;
    ExcludedWindows m_excluded;
    RootView m_root;
    std::unique_ptr<WindowComposer> m_composer; ///< null while the screen itself is read
    std::set<xcb_window_t> m_hidden;            ///< top levels of the excluded windows
    MediaTime m_lastSeen = MediaTime::zero();   ///< when one of them was last known to be on the area
    bool m_isRedirected = false;
    bool m_areWindowsChanged = true;
    bool m_isDesktopChanged = false;
    bool m_isScreenChanged = false;
};

} // namespace zivra::desktop
