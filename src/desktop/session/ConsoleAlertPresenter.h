#pragma once

#include "platform/AlertPresenter.h"

namespace zivra::desktop {

/// For a run of the program that nobody watches: writes each alert to standard error, in a line, and answers
/// with its last button and an empty text.
class ConsoleAlertPresenter final : public AlertPresenter {
public:
    [[nodiscard]] QFuture<AlertAnswer> run(const Alert &alert) override;
};

} // namespace zivra::desktop
