#pragma once

// clang-format off
#include <QObject> // before all others: moc 6.4 cannot parse <compare> by itself
// clang-format on

#include "platform/CaptureDevices.h"

#include <optional>
#include <vector>

namespace zivra {

/// The cameras and microphones, live as they come and go, in the order that the desktop lists them.
/// Main thread only. Which one is selected is a matter of the settings.
class Devices : public QObject {
    Q_OBJECT

public:
    /// `catalog` must outlive the object, which becomes the one that hears of its changes.
    explicit Devices(CaptureDeviceCatalog &catalog, QObject *parent = nullptr);

    [[nodiscard]] const std::vector<CaptureDevice> &cameras() const { return m_cameras; }
    [[nodiscard]] const std::vector<CaptureDevice> &microphones() const { return m_microphones; }
    /// What the desktop uses when nobody chooses.
    [[nodiscard]] std::optional<CaptureDevice> defaultCamera() const;
    [[nodiscard]] std::optional<CaptureDevice> defaultMicrophone() const;

    /// Reads both lists again.
    void refresh();

Q_SIGNALS:
    void camerasChanged();
    void microphonesChanged();

private:
    CaptureDeviceCatalog &m_catalog;
    std::vector<CaptureDevice> m_cameras;
    std::vector<CaptureDevice> m_microphones;
};

} // namespace zivra
