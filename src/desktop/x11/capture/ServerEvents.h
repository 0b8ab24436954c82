#pragma once

#include "desktop/x11/XcbConnection.h"

#include <xcb/damage.h>

namespace zivra::desktop {

/// Tells apart the events that a capture asks for. The server numbers extensions as it likes.
class ServerEvents {
public:
    enum class Kind {
        Damage,      ///< `xcb_damage_notify_event_t`
        CursorImage, ///< the cursor has another picture
        Motion,      ///< the mouse has moved
        Press,       ///< a mouse button went down, the wheel excepted
        Displays,    ///< displays came, went or changed
        Structure,   ///< windows came, went, moved or changed their order
        Property,    ///< `xcb_property_notify_event_t`
        Other,
    };

    explicit ServerEvents(const XcbConnection &connection);

    [[nodiscard]] Kind kind(const xcb_generic_event_t &event) const;

    /// Subscribes to what all captures need; the mouse only where its motion or presses are shown.
    static void select(const XcbConnection &connection, bool showsCursor, bool showsMouseClicks);

private:
    [[nodiscard]] Kind inputKind(const xcb_ge_generic_event_t &event) const;

    int m_firstDamageEvent;
    int m_firstFixesEvent;
    int m_firstDisplayEvent;
    int m_inputExtension;
};

} // namespace zivra::desktop
