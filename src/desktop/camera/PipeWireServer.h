#pragma once

#include "desktop/camera/PipeWireHandles.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace zivra::desktop {

/// A camera that some program shares, or the session manager for the hardware.
struct PipeWireNode {
    std::uint32_t id = 0;    ///< until it goes away
    std::string name;        ///< the same across restarts
    std::string description; ///< for the user
};

/// Is told on the loop's thread, with the lock held, when a camera has gone. It may remove itself then, but
/// not others.
class PipeWireListener {
public:
    virtual void nodeRemoved(std::uint32_t id) = 0;

protected:
    ~PipeWireListener() = default;
};

/// The connection to the user's PipeWire server, with a thread of its own that runs libpipewire's loop, and
/// the cameras there, but for those of V4L2. While no picture comes and no camera either, the thread sleeps.
///
/// Lock discipline: the object is its own lock (`std::unique_lock lock(server)`), which is the loop's.
/// Everything below `unlock()` and every object made on this connection is used with the lock held, or in a
/// callback on the loop's thread, which holds it already.
///
/// Nothing here fails: without a server there are no cameras, and a lost connection is made anew only when
/// somebody asks for it (`connectIfDown`).
class PipeWireServer {
public:
    using Clock = std::chrono::steady_clock;

    using ChangeHandler = std::function<void(const std::vector<PipeWireNode> &)>;

    /// `onChange` is called with the lock held, when the list has changed and once when it is complete, or
    /// empty for want of a server.
    explicit PipeWireServer(ChangeHandler onChange);
    ~PipeWireServer();
    PipeWireServer(const PipeWireServer &) = delete;
    PipeWireServer &operator=(const PipeWireServer &) = delete;

    void lock() { pw_thread_loop_lock(m_loop.get()); }
    void unlock() { pw_thread_loop_unlock(m_loop.get()); }

    [[nodiscard]] const std::vector<PipeWireNode> &nodes() const { return m_nodes; }
    /// Null without a connection.
    [[nodiscard]] pw_core *core() const { return m_isLost ? nullptr : m_core.get(); }
    /// Tries again when there is no connection, unless the last attempt was less than `interval` ago.
    void connectIfDown(Clock::duration interval);
    void addListener(PipeWireListener &listener) { m_listeners.push_back(&listener); }
    void removeListener(PipeWireListener &listener) { std::erase(m_listeners, &listener); }

private:
    void connect();
    void disconnect();
    void added(std::uint32_t id, const char *type, const spa_dict *properties);
    void removed(std::uint32_t id);
    void lost();
    static PipeWireServer &from(void *self) { return *static_cast<PipeWireServer *>(self); }

    ChangeHandler m_onChange;
    PipeWireLoopHandle m_loop;
    PipeWireContextHandle m_context;
    PipeWireCoreHandle m_core; ///< null when down
    PipeWireRegistryHandle m_registry;
    spa_hook m_coreHook{};
    spa_hook m_registryHook{};
    bool m_isLost = false;     ///< the connection is broken and waits to be cleared away
    bool m_isComplete = false; ///< the server has told what it had at first
    Clock::time_point m_lastAttempt;
    std::vector<PipeWireNode> m_nodes;
    std::vector<PipeWireListener *> m_listeners;
};

} // namespace zivra::desktop
