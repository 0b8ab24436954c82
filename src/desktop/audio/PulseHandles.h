#pragma once

#include <pulse/pulseaudio.h>

#include <chrono>
#include <memory>

namespace zivra::desktop {

/// Owners for what libpulse hands out. All but the loop are made, used and destroyed with the loop's lock
/// held, or on the loop's thread, which holds it during every callback.

struct PulseLoopFree {
    void operator()(pa_threaded_mainloop *loop) const { pa_threaded_mainloop_free(loop); }
};
using PulseLoopHandle = std::unique_ptr<pa_threaded_mainloop, PulseLoopFree>;

/// No callback of the context comes any more once it has been destroyed here.
struct PulseContextFree {
    void operator()(pa_context *context) const
    {
        pa_context_set_state_callback(context, nullptr, nullptr);
        pa_context_set_subscribe_callback(context, nullptr, nullptr);
        pa_context_disconnect(context);
        pa_context_unref(context);
    }
};
using PulseContextHandle = std::unique_ptr<pa_context, PulseContextFree>;

/// No callback of the stream comes any more once it has been destroyed here.
struct PulseStreamFree {
    void operator()(pa_stream *stream) const
    {
        pa_stream_set_state_callback(stream, nullptr, nullptr);
        pa_stream_set_read_callback(stream, nullptr, nullptr);
        pa_stream_set_moved_callback(stream, nullptr, nullptr);
        pa_stream_disconnect(stream);
        pa_stream_unref(stream);
    }
};
using PulseStreamHandle = std::unique_ptr<pa_stream, PulseStreamFree>;

/// Letting go of an operation does not cancel it.
struct PulseOperationFree {
    void operator()(pa_operation *operation) const { pa_operation_unref(operation); }
};
using PulseOperationHandle = std::unique_ptr<pa_operation, PulseOperationFree>;

struct PulsePropertiesFree {
    void operator()(pa_proplist *properties) const { pa_proplist_free(properties); }
};
using PulsePropertiesHandle = std::unique_ptr<pa_proplist, PulsePropertiesFree>;

/// A timer on a loop that fires once each time it is armed.
class PulseTimer {
public:
    /// `fire` is called on the loop's thread.
    PulseTimer(pa_mainloop_api *api, void (*fire)(void *), void *userData)
        : m_api(api),
          m_fire(fire),
          m_userData(userData)
    {
    }
    ~PulseTimer()
    {
        if (m_event != nullptr) {
            m_api->time_free(m_event);
        }
    }
    PulseTimer(const PulseTimer &) = delete;
    PulseTimer &operator=(const PulseTimer &) = delete;

    /// Fires after this while, in place of what was armed before.
    void arm(std::chrono::microseconds after)
    {
        // The loop turns the wall-clock time into one on the monotonic clock at once.
        timeval at{};
        pa_gettimeofday(&at);
        pa_timeval_add(&at, static_cast<pa_usec_t>(after.count()));
        if (m_event != nullptr) {
            m_api->time_restart(m_event, &at);
        } else {
            m_event = m_api->time_new(m_api, &at, &PulseTimer::fired, this);
        }
    }

private:
    static void fired(pa_mainloop_api *, pa_time_event *, const timeval *, void *self)
    {
        const auto *timer = static_cast<PulseTimer *>(self);
        timer->m_fire(timer->m_userData);
    }

    pa_mainloop_api *m_api;
    void (*m_fire)(void *);
    void *m_userData;
    pa_time_event *m_event = nullptr; ///< owned; freed through the loop's table of functions
};

} // namespace zivra::desktop
