#pragma once

#include <cstdint>
#include <functional>
#include <optional>

namespace zivra {

/// Key combinations that reach us whatever application has the keyboard. Main thread only.
///
/// Key codes are hardware positions in the numbering of Apple keyboards (HIToolbox, Events.h), which
/// stored shortcuts use on every platform; modifiers are its bits: control 0x1000, option 0x0800,
/// shift 0x0200, command 0x0100.
class HotKeyService {
public:
    /// Names one active combination. Never reused within a run.
    using Reference = std::uint64_t;

    virtual ~HotKeyService() = default;

    /// Absent when the combination is taken or unknown. `id` is what the press handler is given.
    [[nodiscard]] virtual std::optional<Reference>
    registerHotKey(std::uint32_t keyCode, std::uint32_t modifiers, std::uint32_t id) = 0;
    virtual void unregisterHotKey(Reference reference) = 0;
    /// Called on the main thread at each press, not at auto-repeat or release.
    virtual void setPressHandler(std::function<void(std::uint32_t id)> handler) = 0;
};

} // namespace zivra
