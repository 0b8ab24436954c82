#include "desktop/session/DialogAlertPresenter.h"

#include "desktop/session/AlertDialog.h"

#include <algorithm>

namespace zivra::desktop {

DialogAlertPresenter::DialogAlertPresenter() = default;
DialogAlertPresenter::~DialogAlertPresenter() = default;

QFuture<AlertAnswer> DialogAlertPresenter::run(const Alert &alert)
{
    auto *dialog = m_dialogs.emplace_back(std::make_unique<AlertDialog>(alert)).get();
    QObject::connect(dialog, &QDialog::finished, dialog, [this, dialog] { dismiss(dialog); });
    dialog->present(static_cast<int>(m_dialogs.size()) - 1);
    return dialog->answer();
}

void DialogAlertPresenter::dismiss(AlertDialog *dialog)
{
    const auto found = std::ranges::find(m_dialogs, dialog, &std::unique_ptr<AlertDialog>::get);
    // The dialog is still emitting its signal.
    found->release()->deleteLater();
    m_dialogs.erase(found);
}

} // namespace zivra::desktop
