#include "desktop/camera/PipeWireServer.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <mutex>
#include <string_view>
#include <utility>

namespace zivra::desktop {

namespace {

std::string_view property(const spa_dict &properties, const char *key)
{
    const char *value = spa_dict_lookup(&properties, key);
    return value != nullptr ? value : "";
}

} // namespace

PipeWireServer::PipeWireServer(ChangeHandler onChange) : m_onChange(std::move(onChange))
{
    pw_init(nullptr, nullptr);
    m_loop.reset(pw_thread_loop_new("zivra-pipewire", nullptr));
    m_context.reset(pw_context_new(pw_thread_loop_get_loop(m_loop.get()), nullptr, 0));
    pw_thread_loop_start(m_loop.get());
    const std::unique_lock held(*this);
    connect();
}

PipeWireServer::~PipeWireServer()
{
    pw_thread_loop_stop(m_loop.get());
    disconnect();
    m_context.reset();
}

void PipeWireServer::connectIfDown(Clock::duration interval)
{
    if (core() == nullptr && Clock::now() - m_lastAttempt >= interval) {
        connect();
    }
}

void PipeWireServer::connect()
{
    static const pw_core_events coreEvents = [] {
        pw_core_events events{};
        events.version = PW_VERSION_CORE_EVENTS;
        events.done = [](void *self, std::uint32_t, int) {
            from(self).m_isComplete = true;
            from(self).m_onChange(from(self).m_nodes);
        };
        events.error = [](void *self, std::uint32_t id, int, int result, const char *) {
            if (id == PW_ID_CORE && result == -EPIPE) {
                from(self).lost();
            }
        };
        return events;
    }();
    static const pw_registry_events registryEvents = [] {
        pw_registry_events events{};
        events.version = PW_VERSION_REGISTRY_EVENTS;
        events.global = [](void *self, std::uint32_t id, std::uint32_t, const char *type, std::uint32_t,
                           const spa_dict *properties) { from(self).added(id, type, properties); };
        events.global_remove = [](void *self, std::uint32_t id) { from(self).removed(id); };
        return events;
    }();

    disconnect();
    m_lastAttempt = Clock::now();
    m_core.reset(pw_context_connect(m_context.get(), nullptr, 0));
    if (!m_core) {
        m_onChange(m_nodes);
        return;
    }
    pw_core_add_listener(m_core.get(), &m_coreHook, &coreEvents, this);
    m_registry.reset(pw_core_get_registry(m_core.get(), PW_VERSION_REGISTRY, 0));
    pw_registry_add_listener(m_registry.get(), &m_registryHook, &registryEvents, this);
    pw_core_sync(m_core.get(), PW_ID_CORE, 0); // answered when all there is has been told
}

void PipeWireServer::disconnect()
{
    if (m_core) {
        spa_hook_remove(&m_registryHook);
        spa_hook_remove(&m_coreHook);
        m_registry.reset();
        m_core.reset();
    }
    m_isLost = false;
    m_isComplete = false;
}

void PipeWireServer::added(std::uint32_t id, const char *type, const spa_dict *properties)
{
    if (std::strcmp(type, PW_TYPE_INTERFACE_Node) != 0 || properties == nullptr ||
        property(*properties, PW_KEY_MEDIA_CLASS) != "Video/Source" ||
        property(*properties, PW_KEY_OBJECT_PATH).starts_with("v4l2:")) {
        return;
    }
    PipeWireNode node{
        .id = id, .name = std::string(property(*properties, PW_KEY_NODE_NAME)), .description = {}};
    for (const char *key : {PW_KEY_NODE_DESCRIPTION, PW_KEY_NODE_NICK, PW_KEY_NODE_NAME}) {
        if (node.description.empty()) {
            node.description = property(*properties, key);
        }
    }
    const bool isKnown = std::ranges::find(m_nodes, node.name, &PipeWireNode::name) != m_nodes.end();
    if (node.name.empty() || isKnown) {
        return;
    }
    m_nodes.push_back(std::move(node));
    if (m_isComplete) {
        m_onChange(m_nodes);
    }
}

void PipeWireServer::removed(std::uint32_t id)
{
    if (std::erase_if(m_nodes, [id](const PipeWireNode &node) { return node.id == id; }) == 0) {
        return;
    }
    for (auto *listener : std::vector(m_listeners)) {
        listener->nodeRemoved(id);
    }
    m_onChange(m_nodes);
}

void PipeWireServer::lost()
{
    m_isLost = true;
    for (const PipeWireNode &node : std::vector(m_nodes)) {
        removed(node.id);
    }
}

} // namespace zivra::desktop
