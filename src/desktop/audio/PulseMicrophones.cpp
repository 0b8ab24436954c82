#include "desktop/audio/PulseMicrophones.h"

#include <chrono>
#include <mutex>
#include <utility>

namespace zivra::desktop {

namespace {

constexpr auto kRetryInterval = std::chrono::seconds(3);
constexpr auto kLongestWait = std::chrono::milliseconds(500);

CaptureDevice deviceOf(const PulseInput &input)
{
    const auto &name = input.description.empty() ? input.name : input.description;
    return {.uniqueID = QString::fromStdString(input.name), .name = QString::fromStdString(name)};
}

} // namespace

PulseMicrophones::PulseMicrophones(std::shared_ptr<PulseServer> server) : m_server(std::move(server))
{
    const std::unique_lock held(*m_server);
    m_announced = listOf(m_server->devices());
    m_server->addListener(*this);
}

PulseMicrophones::~PulseMicrophones()
{
    const std::unique_lock held(*m_server);
    m_server->removeListener(*this);
}

PulseMicrophones::List PulseMicrophones::current() const
{
    std::unique_lock held(*m_server);
    if (m_server->devices() == nullptr) {
        m_server->connectIfDown(kRetryInterval);
        m_server->waitForAnswer(held, kLongestWait);
    }
    return listOf(m_server->devices());
}

PulseMicrophones::List PulseMicrophones::listOf(const PulseDevices *devices)
{
    List list;
    if (devices == nullptr) {
        return list;
    }
    for (const auto &input : devices->inputs) {
        if (!input.isMonitor) {
            list.devices.push_back(deviceOf(input));
        }
    }
    if (const auto *standard = defaultMicrophone(*devices); standard != nullptr) {
        list.standard = deviceOf(*standard);
    }
    return list;
}

void PulseMicrophones::serverChanged()
{
    auto list = listOf(m_server->devices());
    if (list == m_announced) {
        return;
    }
    m_announced = std::move(list);
    const auto announce = [this] {
        if (m_onChange) {
            m_onChange();
        }
    };
    QMetaObject::invokeMethod(&m_mainThread, announce, Qt::QueuedConnection);
}

} // namespace zivra::desktop
