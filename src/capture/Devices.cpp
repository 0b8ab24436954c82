#include "capture/Devices.h"

#include <QPointer>

namespace zivra {

Devices::Devices(CaptureDeviceCatalog &catalog, QObject *parent) : QObject(parent), m_catalog(catalog)
{
    refresh();
    m_catalog.setChangeHandler([self = QPointer(this)] {
        if (self) {
            self->refresh();
        }
    });
}

std::optional<CaptureDevice> Devices::defaultCamera() const
{
    return m_catalog.defaultDevice(MediaType::Video);
}

std::optional<CaptureDevice> Devices::defaultMicrophone() const
{
    return m_catalog.defaultDevice(MediaType::Audio);
}

void Devices::refresh()
{
    m_cameras = m_catalog.devices(MediaType::Video);
    Q_EMIT camerasChanged();
    m_microphones = m_catalog.devices(MediaType::Audio);
    Q_EMIT microphonesChanged();
}

} // namespace zivra
