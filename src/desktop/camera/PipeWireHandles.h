#pragma once

#include <pipewire/pipewire.h>

#include <memory>

namespace zivra::desktop {

/// Owners for what libpipewire hands out. All but the loop are made, used and destroyed with the loop's lock
/// held, or on the loop's thread, which holds it during every callback.

struct PipeWireLoopFree {
    void operator()(pw_thread_loop *loop) const { pw_thread_loop_destroy(loop); }
};
using PipeWireLoopHandle = std::unique_ptr<pw_thread_loop, PipeWireLoopFree>;

struct PipeWireContextFree {
    void operator()(pw_context *context) const { pw_context_destroy(context); }
};
using PipeWireContextHandle = std::unique_ptr<pw_context, PipeWireContextFree>;

struct PipeWireCoreFree {
    void operator()(pw_core *core) const { pw_core_disconnect(core); }
};
using PipeWireCoreHandle = std::unique_ptr<pw_core, PipeWireCoreFree>;

struct PipeWireRegistryFree {
    void operator()(pw_registry *registry) const
    {
        pw_proxy_destroy(reinterpret_cast<pw_proxy *>(registry)); // what every interface of theirs is
    }
};
using PipeWireRegistryHandle = std::unique_ptr<pw_registry, PipeWireRegistryFree>;

struct PipeWireStreamFree {
    void operator()(pw_stream *stream) const { pw_stream_destroy(stream); }
};
using PipeWireStreamHandle = std::unique_ptr<pw_stream, PipeWireStreamFree>;

} // namespace zivra::desktop
