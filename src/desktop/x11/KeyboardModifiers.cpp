#include "desktop/x11/KeyboardModifiers.h"

#include <xcb/xcb_keysyms.h>

#include <algorithm>

namespace zivra::desktop {

namespace {

// From X11/keysymdef.h.
constexpr xcb_keysym_t kNumLock = 0xFF7F;
constexpr xcb_keysym_t kLeftAlt = 0xFFE9;
constexpr xcb_keysym_t kLeftSuper = 0xFFEB;

// From HIToolbox/Events.h.
constexpr std::uint32_t kCommand = 0x0100;
constexpr std::uint32_t kShift = 0x0200;
constexpr std::uint32_t kOption = 0x0800;
constexpr std::uint32_t kControl = 0x1000;

constexpr std::uint16_t kAllModifiers = 0xFF;

struct FreeSymbols {
    void operator()(xcb_key_symbols_t *symbols) const { xcb_key_symbols_free(symbols); }
};

/// The modifier that a key with this symbol sets; 0 when there is none.
std::uint16_t maskOf(xcb_keysym_t symbol, xcb_key_symbols_t *symbols,
                     const xcb_get_modifier_mapping_reply_t &mapping)
{
    constexpr int kModifiers = 8;
    const XcbOwned<xcb_keycode_t> keys(xcb_key_symbols_get_keycode(symbols, symbol));
    const auto *keysOfModifier = xcb_get_modifier_mapping_keycodes(&mapping);
    for (int modifier = 0; keys && modifier < kModifiers; ++modifier) {
        for (const auto *key = keys.get(); *key != XCB_NO_SYMBOL; ++key) {
            if (std::find(keysOfModifier, keysOfModifier + mapping.keycodes_per_modifier, *key) !=
                keysOfModifier + mapping.keycodes_per_modifier) {
                return static_cast<std::uint16_t>(1U << static_cast<unsigned>(modifier));
            }
        }
        keysOfModifier += mapping.keycodes_per_modifier;
    }
    return 0;
}

} // namespace

KeyboardModifiers KeyboardModifiers::read(const XcbConnection &connection)
{
    KeyboardModifiers modifiers;
    const std::unique_ptr<xcb_key_symbols_t, FreeSymbols> symbols(xcb_key_symbols_alloc(connection.get()));
    const auto mapping =
        connection.reply(xcb_get_modifier_mapping_reply, xcb_get_modifier_mapping(connection.get()));
    if (!symbols || !mapping) {
        return modifiers;
    }
    if (const auto mask = maskOf(kLeftAlt, symbols.get(), *mapping); mask != 0) {
        modifiers.option = mask;
    }
    if (const auto mask = maskOf(kLeftSuper, symbols.get(), *mapping); mask != 0) {
        modifiers.command = mask;
    }
    modifiers.numLock = maskOf(kNumLock, symbols.get(), *mapping);
    return modifiers;
}

std::uint16_t KeyboardModifiers::fromHotKey(std::uint32_t modifiers) const
{
    const auto when = [&](std::uint32_t bit, unsigned mask) { return (modifiers & bit) != 0 ? mask : 0U; };
    return static_cast<std::uint16_t>(when(kControl, XCB_MOD_MASK_CONTROL) |
                                      when(kShift, XCB_MOD_MASK_SHIFT) | when(kOption, option) |
                                      when(kCommand, command));
}

std::array<std::uint16_t, 4> KeyboardModifiers::lockStates() const
{
    constexpr std::uint16_t kCapsLock = XCB_MOD_MASK_LOCK;
    return {0, kCapsLock, numLock, static_cast<std::uint16_t>(kCapsLock | numLock)};
}

std::uint16_t KeyboardModifiers::withoutLocks(std::uint16_t state) const
{
    return static_cast<std::uint16_t>(state & kAllModifiers & ~(unsigned{XCB_MOD_MASK_LOCK} | numLock));
}

} // namespace zivra::desktop
