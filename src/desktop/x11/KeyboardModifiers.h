#pragma once

#include "desktop/x11/XcbConnection.h"

#include <array>
#include <cstdint>

namespace zivra::desktop {

/// Which of the server's eight modifiers the keys are that hot keys speak of; the layout decides on that.
struct KeyboardModifiers {
    std::uint16_t option = XCB_MOD_MASK_1;  ///< Alt
    std::uint16_t command = XCB_MOD_MASK_4; ///< Super
    std::uint16_t numLock = 0;              ///< 0: the keyboard has none

    /// As the keyboard is laid out now, with the usual ones for what it does not have.
    static KeyboardModifiers read(const XcbConnection &connection);

    friend bool operator==(const KeyboardModifiers &, const KeyboardModifiers &) = default;

    /// From the bits of `HotKeyService`; others are ignored.
    [[nodiscard]] std::uint16_t fromHotKey(std::uint32_t modifiers) const;
    /// What the state of the locks, which no hot key means to ask for, may add to a combination.
    [[nodiscard]] std::array<std::uint16_t, 4> lockStates() const;
    /// A key event's modifiers without locks, buttons and layout group.
    [[nodiscard]] std::uint16_t withoutLocks(std::uint16_t state) const;
};

} // namespace zivra::desktop
