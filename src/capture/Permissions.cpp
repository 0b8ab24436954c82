#include "capture/Permissions.h"

#include <QCoroFuture>

namespace zivra {

Permissions::Permissions(MediaAuthorization &authorization, Workspace &workspace)
    : m_authorization(authorization),
      m_workspace(workspace)
{
}

QCoro::Task<bool> Permissions::request(MediaType type)
{
    const AuthorizationStatus status = m_authorization.authorizationStatus(type);
    if (status != AuthorizationStatus::NotDetermined) {
        co_return status == AuthorizationStatus::Authorized;
    }
    const bool granted = co_await m_authorization.requestAccess(type);
    co_return granted;
}

void Permissions::openPrivacySettings(const QString &pane)
{
    m_workspace.openPrivacySettings(pane);
}

} // namespace zivra
