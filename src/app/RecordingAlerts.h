#pragma once

#include "capture/Permissions.h"
#include "platform/AlertPresenter.h"

#include <QCoroTask>

#include <exception>

namespace zivra {

/// The user gave up a recording before it began: nothing to be told of.
[[nodiscard]] bool isCancellation(const std::exception_ptr &error);

/// What the user is told and asked around a recording. On the main thread; both outlive it.
class RecordingAlerts {
public:
    RecordingAlerts(AlertPresenter &alerts, Permissions &permissions)
        : m_alerts(alerts),
          m_permissions(permissions)
    {
    }

    /// Tells what went wrong; where a permission is missing, offers the settings that grant it.
    QCoro::Task<> present(std::exception_ptr error);
    /// Whether the recording is to be thrown away.
    QCoro::Task<bool> confirmDiscard();

private:
    AlertPresenter &m_alerts;
    Permissions &m_permissions;
};

} // namespace zivra
