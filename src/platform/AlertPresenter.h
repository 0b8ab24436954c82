#pragma once

#include <QFuture>
#include <QString>
#include <QStringList>

#include <optional>

namespace zivra {

/// A question or a message to the user.
struct Alert {
    enum class Style { Informational, Warning };

    QString message;
    QString informativeText; ///< may be empty
    Style style = Style::Informational;
    QStringList buttons; ///< in order, the first is the default; empty: the desktop's "OK"
    std::optional<QString> textFieldPlaceholder; ///< present: the alert has a text field
};

/// `button` is the index of the pressed button. Closing the alert without one counts as its last button.
struct AlertAnswer {
    int button = 0;
    QString text; ///< of the text field
};

/// Shows alerts in front of everything. Main thread only; callers suspend until the answer.
class AlertPresenter {
public:
    virtual ~AlertPresenter() = default;

    [[nodiscard]] virtual QFuture<AlertAnswer> run(const Alert &alert) = 0;
};

} // namespace zivra
