#include "app/CameraPreview.h"

#include "app/CapturePlan.h"
#include "app/ChosenDevices.h"

#include <utility>

namespace zivra {

CameraPreview::CameraPreview(Collaborators collaborators, std::function<bool()> isAllowed)
    : m_with(collaborators),
      m_isAllowed(std::move(isAllowed))
{
}

void CameraPreview::startCamera()
{
    m_with.camera.start(chosenCamera(m_with.settings, m_with.devices), m_with.settings.quality());
}

void CameraPreview::showBubble(const Screen &screen, bool cameraOnly)
{
    m_with.bubble.show(m_with.camera, screen, cameraOnly, m_with.settings.bubbleSize(),
                       m_with.settings.mirrorCamera());
}

void CameraPreview::stop()
{
    m_with.bubble.hide();
    m_with.camera.stop();
}

void CameraPreview::setWanted(bool wanted)
{
    m_isWanted = wanted;
    if (wanted && m_with.settings.effectiveMode() != RecordingMode::ScreenOnly &&
        isAuthorization(AuthorizationStatus::NotDetermined)) {
        askAndRefresh();
    }
    refresh();
}

QCoro::Task<> CameraPreview::askAndRefresh()
{
    co_await m_with.permissions.request(MediaType::Video);
    refresh();
}

bool CameraPreview::isAuthorization(AuthorizationStatus status) const
{
    return m_with.authorization.authorizationStatus(MediaType::Video) == status;
}

void CameraPreview::refresh()
{
    if (!m_isAllowed()) {
        return;
    }
    const RecordingMode mode = m_with.settings.effectiveMode();
    if (m_isWanted && mode != RecordingMode::ScreenOnly && isAuthorization(AuthorizationStatus::Authorized)) {
        startCamera();
        showBubble(screenWithMouse(m_with.screens), mode == RecordingMode::CameraOnly);
    } else {
        stop();
    }
}

} // namespace zivra
