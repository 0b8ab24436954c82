#include "desktop/camera/PipeWireCameras.h"

#include "desktop/camera/PipeWireServer.h"
#include "desktop/camera/PipeWireSource.h"

#include <mutex>
#include <utility>

namespace zivra::desktop {

namespace {

const auto kPrefix = QStringLiteral("pipewire:");
constexpr auto kRetryInterval = std::chrono::seconds(3);

std::vector<CaptureDevice> devicesOf(const std::vector<PipeWireNode> &nodes)
{
    std::vector<CaptureDevice> devices;
    devices.reserve(nodes.size());
    for (const PipeWireNode &node : nodes) {
        devices.push_back({.uniqueID = kPrefix + QString::fromStdString(node.name),
                           .name = QString::fromStdString(node.description)});
    }
    return devices;
}

} // namespace

PipeWireCameras::PipeWireCameras()
    : m_server(std::make_shared<PipeWireServer>(
          [this](const std::vector<PipeWireNode> &nodes) { m_list.replace(devicesOf(nodes)); }))
{
}

PipeWireCameras::~PipeWireCameras() = default;

std::vector<CaptureDevice> PipeWireCameras::cameras() const
{
    {
        const std::unique_lock held(*m_server);
        m_server->connectIfDown(kRetryInterval);
    }
    return m_list.all();
}

void PipeWireCameras::setChangeHandler(std::function<void()> handler)
{
    m_list.setChangeHandler(std::move(handler));
}

std::unique_ptr<CaptureSource> PipeWireCameras::makeSource(const QString &deviceID, QSize size)
{
    return deviceID.startsWith(kPrefix)
               ? std::make_unique<PipeWireSource>(m_server, deviceID.mid(kPrefix.size()).toStdString(), size)
               : nullptr;
}

} // namespace zivra::desktop
