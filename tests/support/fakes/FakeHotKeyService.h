#pragma once

#include "platform/HotKeyService.h"

#include <map>
#include <set>
#include <utility>

namespace zivra::test {

class FakeHotKeyService final : public HotKeyService {
public:
    struct Active {
        std::uint32_t keyCode = 0;
        std::uint32_t modifiers = 0;
        std::uint32_t id = 0;
    };

    std::map<Reference, Active> active;
    std::set<std::pair<std::uint32_t, std::uint32_t>> takenByOthers; ///< key code, modifiers
    int unregistrations = 0;

    std::optional<Reference> registerHotKey(std::uint32_t keyCode, std::uint32_t modifiers,
                                            std::uint32_t id) override
    {
        if (takenByOthers.contains({keyCode, modifiers})) {
            return std::nullopt;
        }
        active[++m_lastReference] = {keyCode, modifiers, id};
        return m_lastReference;
    }
    void unregisterHotKey(Reference reference) override
    {
        active.erase(reference);
        ++unregistrations;
    }
    void setPressHandler(std::function<void(std::uint32_t id)> handler) override
    {
        m_handler = std::move(handler);
    }

    /// The user presses a combination; nothing comes of it when it is not active.
    void press(std::uint32_t keyCode, std::uint32_t modifiers)
    {
        for (const auto &[reference, hotKey] : std::map(active)) {
            if (hotKey.keyCode == keyCode && hotKey.modifiers == modifiers) {
                m_handler(hotKey.id);
            }
        }
    }

private:
    std::function<void(std::uint32_t)> m_handler;
    Reference m_lastReference = 0;
};

} // namespace zivra::test
