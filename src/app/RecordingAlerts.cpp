#include "app/RecordingAlerts.h"

#include "capture/ZivraError.h"
#include "platform/PlatformError.h"

#include <QCoroFuture>

#include <optional>

namespace zivra {

namespace {

std::optional<ZivraError> asZivraError(const std::exception_ptr &error)
{
    try {
        std::rethrow_exception(error);
    } catch (const ZivraError &known) {
        return known;
    } catch (...) {
        return std::nullopt;
    }
}

QString privacyPane(const ZivraError &error)
{
    switch (error.code()) {
    case ZivraError::screenPermission:
        return Permissions::screenCapturePane();
    case ZivraError::cameraPermission:
        return Permissions::cameraPane();
    case ZivraError::micPermission:
        return Permissions::microphonePane();
    default:
        return {};
    }
}

} // namespace

bool isCancellation(const std::exception_ptr &error)
{
    return asZivraError(error) == ZivraError(ZivraError::cancelled);
}

QCoro::Task<> RecordingAlerts::present(std::exception_ptr error)
{
    Alert alert;
    QString pane;
    if (const auto known = asZivraError(error)) {
        alert.message = known->errorDescription();
        pane = privacyPane(*known);
        if (!pane.isEmpty()) {
            alert.informativeText = known->recoverySuggestion().value_or(QString());
            alert.buttons = {QStringLiteral("Open System Settings"), QStringLiteral("Cancel")};
        }
    } else {
        alert.message = errorText(error);
    }
    alert.style = Alert::Style::Warning;
    const AlertAnswer answer = co_await m_alerts.run(alert);
    if (!pane.isEmpty() && answer.button == 0) {
        m_permissions.openPrivacySettings(pane);
    }
}

QCoro::Task<bool> RecordingAlerts::confirmDiscard()
{
    Alert alert;
    alert.message = QStringLiteral("Delete this recording?");
    alert.informativeText = QStringLiteral("The recording will be discarded. This can't be undone.");
    alert.style = Alert::Style::Warning;
    alert.buttons = {QStringLiteral("Delete"), QStringLiteral("Keep Recording")};
    const AlertAnswer answer = co_await m_alerts.run(alert);
    co_return answer.button == 0;
}

} // namespace zivra
