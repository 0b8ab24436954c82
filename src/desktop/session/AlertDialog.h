#pragma once

#include "platform/AlertPresenter.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPromise>
#include <QVBoxLayout>

namespace zivra::desktop {

/// The window of one alert: its icon beside the message in bold, the informative text, the text field if
/// there is one, and the buttons in the desktop's direction. Lengths are in points.
class AlertDialog final : public QDialog {
public:
    explicit AlertDialog(const Alert &alert);
    ~AlertDialog() override;
    Q_DISABLE_COPY_MOVE(AlertDialog)

    /// Shows it in front of everything with the keyboard, on the screen of the pointer; `cascade` other
    /// alerts are open, none of which it shall cover exactly.
    void present(int cascade);
    /// Finishes when the user has answered, at the latest when the dialog ends.
    [[nodiscard]] QFuture<AlertAnswer> answer() const { return m_promise.future(); }

    void done(int result) override;

private:
    void setUpTexts(const Alert &alert);
    void setUpField(const Alert &alert);
    void setUpButtons(const QStringList &titles);
    void setUpLayout();

    QLabel m_icon{this};
    QLabel m_message{this};
    QLabel m_informativeText{this};
    QLineEdit m_field{this};
    QDialogButtonBox m_buttonBox{this};
    // A layout deletes the inner ones that it still has: they must be gone before it.
    QVBoxLayout m_window;
    QHBoxLayout m_row;
    QVBoxLayout m_column;
    QPromise<AlertAnswer> m_promise;
    int m_button = 0; ///< what closing the dialog now would answer
    bool m_answered = false;
};

} // namespace zivra::desktop
