#include "desktop/audio/PulseServer.h"

#include <mutex>
#include <utility>

namespace zivra::desktop {

namespace {

std::string textOf(const char *text)
{
    return text != nullptr ? std::string(text) : std::string();
}

PulsePropertiesHandle applicationProperties()
{
    PulsePropertiesHandle properties(pa_proplist_new());
    pa_proplist_sets(properties.get(), PA_PROP_APPLICATION_NAME, "Zivra");
    pa_proplist_sets(properties.get(), PA_PROP_APPLICATION_ID, "io.quillbeck.zivra");
    pa_proplist_sets(properties.get(), PA_PROP_APPLICATION_ICON_NAME, "io.quillbeck.zivra");
    return properties;
}

} // namespace

PulseServer::PulseServer() : m_loop(pa_threaded_mainloop_new())
{
    pa_threaded_mainloop_set_name(m_loop.get(), "zivra-sound");
    connect();
    pa_threaded_mainloop_start(m_loop.get());
}

PulseServer::~PulseServer()
{
    {
        const std::unique_lock held(*this);
        m_context.reset();
    }
    pa_threaded_mainloop_stop(m_loop.get());
}

void PulseServer::connectIfDown(Clock::duration interval)
{
    if (!m_context && Clock::now() - m_lastAttempt >= interval) {
        connect();
    }
}

void PulseServer::waitForAnswer(std::unique_lock<PulseServer> &held, Clock::duration atMost)
{
    if (std::exchange(m_mayWait, false)) {
        m_answered.wait_for(held, atMost, [this] { return m_isUp || !m_context; });
    }
}

void PulseServer::connect()
{
    m_lastAttempt = Clock::now();
    m_mayWait = true;
    m_context.reset(pa_context_new_with_proplist(loopApi(), nullptr, applicationProperties().get()));
    pa_context_set_state_callback(
        m_context.get(), [](pa_context *, void *self) { from(self).contextStateChanged(); }, this);
    // A recorder has no use for a silent server of its own making; a desktop's socket starts the real one.
    if (pa_context_connect(m_context.get(), nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0 && m_context) {
        disconnected();
    }
}

void PulseServer::contextStateChanged()
{
    const auto state = pa_context_get_state(m_context.get());
    if (state == PA_CONTEXT_READY) {
        pa_context_set_subscribe_callback(
            m_context.get(),
            [](pa_context *, pa_subscription_event_type_t, std::uint32_t, void *self) {
                from(self).refresh();
            },
            this);
        const auto mask =
            static_cast<pa_subscription_mask_t>(PA_SUBSCRIPTION_MASK_SOURCE | PA_SUBSCRIPTION_MASK_SERVER);
        const PulseOperationHandle subscribed(pa_context_subscribe(m_context.get(), mask, nullptr, nullptr));
        refresh();
    } else if (!PA_CONTEXT_IS_GOOD(state)) {
        disconnected();
    }
}

void PulseServer::disconnected()
{
    m_isUp = false;
    m_isRefreshing = false;
    m_isStale = false;
    // Listeners let go of their streams before the connection goes.
    notify();
    m_context.reset();
    m_answered.notify_all();
}

void PulseServer::refresh()
{
    if (m_isRefreshing) {
        m_isStale = true;
        return;
    }
    m_isRefreshing = true;
    m_isStale = false;
    m_incoming = {};
    // Answers come in the order of the questions.
    const PulseOperationHandle defaults(pa_context_get_server_info(
        m_context.get(),
        [](pa_context *, const pa_server_info *info, void *self) {
            if (info != nullptr) {
                from(self).m_incoming.defaultOutput = textOf(info->default_sink_name);
                from(self).m_incoming.defaultInput = textOf(info->default_source_name);
            }
        },
        this));
    const PulseOperationHandle inputs(pa_context_get_source_info_list(
        m_context.get(),
        [](pa_context *, const pa_source_info *info, int end, void *self) {
            if (end == 0) {
                from(self).collect(*info);
            } else {
                from(self).refreshed();
            }
        },
        this));
}

void PulseServer::collect(const pa_source_info &info)
{
    m_incoming.inputs.push_back({.name = textOf(info.name),
                                 .description = textOf(info.description),
                                 .isMonitor = info.monitor_of_sink != PA_INVALID_INDEX,
                                 .monitoredOutput = textOf(info.monitor_of_sink_name),
                                 .sampleSpec = info.sample_spec,
                                 .channelMap = info.channel_map});
}

void PulseServer::refreshed()
{
    m_isRefreshing = false;
    m_devices = std::move(m_incoming);
    m_isUp = true;
    m_answered.notify_all();
    notify();
    if (m_isStale) {
        refresh();
    }
}

void PulseServer::notify()
{
    for (auto *listener : m_listeners) {
        listener->serverChanged();
    }
}

} // namespace zivra::desktop
