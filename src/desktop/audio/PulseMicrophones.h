#pragma once

#include "desktop/audio/PulseServer.h"
#include "platform/CaptureDevices.h"

#include <QObject>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace zivra::desktop {

/// The microphones that the sound server has. Monitors of outputs are none.
///
/// Main thread only. Asking before the server's first answer waits for it, for half a second at most. Without
/// a server there are none; asking again tries to reach it every few seconds at most.
class PulseMicrophones final : private PulseListener {
public:
    explicit PulseMicrophones(std::shared_ptr<PulseServer> server);
    ~PulseMicrophones();
    PulseMicrophones(const PulseMicrophones &) = delete;
    PulseMicrophones &operator=(const PulseMicrophones &) = delete;

    [[nodiscard]] std::vector<CaptureDevice> all() const { return current().devices; }
    [[nodiscard]] std::optional<CaptureDevice> standard() const { return current().standard; }
    /// Called on the main thread after every change of either; replaces the handler set before.
    void setChangeHandler(std::function<void()> handler) { m_onChange = std::move(handler); }

private:
    struct List {
        std::vector<CaptureDevice> devices;
        std::optional<CaptureDevice> standard;

        friend bool operator==(const List &, const List &) = default;
    };

    [[nodiscard]] static List listOf(const PulseDevices *devices);
    [[nodiscard]] List current() const;
    void serverChanged() override;

    std::shared_ptr<PulseServer> m_server;
    List m_announced; ///< under the server's lock
    std::function<void()> m_onChange;
    QObject m_mainThread; ///< where changes are announced, for as long as this lives
};

} // namespace zivra::desktop
