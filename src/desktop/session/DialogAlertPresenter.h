#pragma once

#include "platform/AlertPresenter.h"

#include <QObject>

#include <memory>
#include <vector>

namespace zivra::desktop {

class AlertDialog;

/// Shows each alert in a dialog of its own, in front of other windows and with the keyboard. Several may be
/// open at once. Those still open when the presenter ends count as closed.
class DialogAlertPresenter final : public AlertPresenter {
public:
    DialogAlertPresenter();
    ~DialogAlertPresenter() override;
    Q_DISABLE_COPY_MOVE(DialogAlertPresenter)

    [[nodiscard]] QFuture<AlertAnswer> run(const Alert &alert) override;

private:
    void dismiss(AlertDialog *dialog);

    std::vector<std::unique_ptr<AlertDialog>> m_dialogs;
};

} // namespace zivra::desktop
