#include "desktop/session/ConsoleAlertPresenter.h"

#include <algorithm>
#include <iostream>

namespace zivra::desktop {

QFuture<AlertAnswer> ConsoleAlertPresenter::run(const Alert &alert)
{
    const auto line = QStringLiteral("%1 %2").arg(alert.message, alert.informativeText);
    std::cerr << line.trimmed().toStdString() << std::endl;
    const auto lastButton = std::max(static_cast<int>(alert.buttons.size()) - 1, 0);
    return QtFuture::makeReadyFuture(AlertAnswer{.button = lastButton, .text = {}});
}

} // namespace zivra::desktop
