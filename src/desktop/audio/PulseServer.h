#pragma once

#include "desktop/audio/PulseDevices.h"
#include "desktop/audio/PulseHandles.h"

#include <chrono>
#include <condition_variable>
#include <vector>

namespace zivra::desktop {

/// Is told on the loop's thread, with the lock held, when the devices or the connection have changed.
/// Must not add or remove listeners.
class PulseListener {
public:
    virtual void serverChanged() = 0;

protected:
    ~PulseListener() = default;
};

/// The connection to the user's sound server, with a thread of its own that runs libpulse's loop, and what
/// the server has, kept up to date by its notices. While nothing records and nothing changes on the server,
/// the thread sleeps.
///
/// Lock discipline: the object is its own lock (`std::unique_lock lock(server)`), which is libpulse's loop
/// lock. Everything below `unlock()` and every libpulse object made on this connection is used with the
/// lock held, or in a callback on the loop's thread, which holds it already and must not take it again.
/// A callback that runs is waited for by whoever takes the lock. Nobody calls out to the main thread
/// while holding it.
///
/// Nothing here fails: without a server there are no devices, and a lost connection is made anew only when
/// somebody asks for it (`connectIfDown`). Made on any thread; destroyed on any but the loop's.
class PulseServer {
public:
    using Clock = std::chrono::steady_clock; ///< CLOCK_MONOTONIC

    /// Starts to connect, and returns before the server has answered.
    PulseServer();
    ~PulseServer();
    PulseServer(const PulseServer &) = delete;
    PulseServer &operator=(const PulseServer &) = delete;

    void lock() { pa_threaded_mainloop_lock(m_loop.get()); }
    void unlock() { pa_threaded_mainloop_unlock(m_loop.get()); }

    [[nodiscard]] pa_mainloop_api *loopApi() const { return pa_threaded_mainloop_get_api(m_loop.get()); }
    /// Connected when `devices()` is not null.
    [[nodiscard]] pa_context *context() const { return m_context.get(); }
    /// Null until the server has answered, and when it has gone.
    [[nodiscard]] const PulseDevices *devices() const { return m_isUp ? &m_devices : nullptr; }
    /// Tries again when there is no connection, unless the last attempt was less than `interval` ago.
    void connectIfDown(Clock::duration interval);
    /// Waits while the server's first answer is under way, at most so long and at most once for a
    /// connection: a server that hangs holds nobody up twice. Not on the loop's thread.
    void waitForAnswer(std::unique_lock<PulseServer> &held, Clock::duration atMost);

    /// The listener must outlive its registration.
    void addListener(PulseListener &listener) { m_listeners.push_back(&listener); }
    void removeListener(PulseListener &listener) { std::erase(m_listeners, &listener); }

private:
    void connect();
    void contextStateChanged();
    void disconnected();
    void refresh();
    void collect(const pa_source_info &info);
    void refreshed();
    void notify();
    static PulseServer &from(void *self) { return *static_cast<PulseServer *>(self); }

    PulseLoopHandle m_loop;
    PulseContextHandle m_context; ///< null when down
    Clock::time_point m_lastAttempt;
    bool m_isUp = false;
    bool m_mayWait = true;
    PulseDevices m_devices;
    PulseDevices m_incoming; ///< the answer that is under way
    bool m_isRefreshing = false;
    bool m_isStale = false; ///< something changed while an answer was under way
    std::vector<PulseListener *> m_listeners;
    std::condition_variable_any m_answered;
};

} // namespace zivra::desktop
