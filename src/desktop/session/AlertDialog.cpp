#include "desktop/session/AlertDialog.h"

#include "desktop/session/AlertBadge.h"

#include <QCursor>
#include <QGuiApplication>
#include <QPushButton>
#include <QScreen>

namespace zivra::desktop {

namespace {

constexpr int iconSize = 48;
constexpr int textWidth = 340;
constexpr int margin = 20;
constexpr int gap = 16;
constexpr int cascadeStep = 28;

void setUpLabel(QLabel &label, const QString &text)
{
    label.setText(text);
    label.setTextFormat(Qt::PlainText); // file names and servers' answers may look like markup
    label.setWordWrap(true);
    label.setFixedWidth(textWidth);
    label.setTextInteractionFlags(Qt::TextSelectableByMouse);
    label.setVisible(!text.isEmpty());
}

} // namespace

AlertDialog::AlertDialog(const Alert &alert)
    : QDialog(nullptr, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                           Qt::WindowCloseButtonHint | Qt::WindowStaysOnTopHint |
                           Qt::MSWindowsFixedSizeDialogHint)
{
    setWindowTitle(QGuiApplication::applicationDisplayName());
    m_icon.setPixmap(alertBadge(alert.style, iconSize, devicePixelRatioF()));
    setUpTexts(alert);
    setUpField(alert);
    setUpButtons(alert.buttons.isEmpty() ? QStringList(QStringLiteral("OK")) : alert.buttons);
    setUpLayout();
    m_promise.start();
}

AlertDialog::~AlertDialog()
{
    if (!m_answered) {
        done(Rejected);
    }
}

void AlertDialog::present(int cascade)
{
    adjustSize();
    const auto *screen = QGuiApplication::screenAt(QCursor::pos());
    const auto area = (screen ? screen : QGuiApplication::primaryScreen())->availableGeometry();
    // A third of the free height above, as the eye expects a message.
    const QPoint corner(area.left() + (area.width() - width()) / 2,
                        area.top() + (area.height() - height()) / 3);
    move(corner + QPoint(cascadeStep, cascadeStep) * cascade);
    show();
    raise();
    activateWindow();
}

void AlertDialog::done(int result)
{
    m_answered = true;
    m_promise.addResult(AlertAnswer{.button = m_button, .text = m_field.text()});
    m_promise.finish();
    QDialog::done(result);
}

void AlertDialog::setUpTexts(const Alert &alert)
{
    auto bold = font();
    bold.setBold(true);
    m_message.setFont(bold);
    setUpLabel(m_message, alert.message);
    setUpLabel(m_informativeText, alert.informativeText);
}

void AlertDialog::setUpField(const Alert &alert)
{
    m_field.setVisible(alert.textFieldPlaceholder.has_value());
    m_field.setPlaceholderText(alert.textFieldPlaceholder.value_or(QString()));
}

void AlertDialog::setUpButtons(const QStringList &titles)
{
    // Within one role a button box keeps the given order, from the left or the right as the desktop does.
    for (int index = 0; index < titles.size(); ++index) {
        auto *button = m_buttonBox.addButton(titles[index], QDialogButtonBox::AcceptRole);
        button->setDefault(index == 0);
        connect(button, &QPushButton::clicked, this, [this, index] {
            m_button = index;
            accept();
        });
    }
    m_button = static_cast<int>(titles.size()) - 1;
    if (!m_field.isHidden()) {
        m_field.setFocus();
    } else {
        m_buttonBox.buttons().first()->setFocus();
    }
}

void AlertDialog::setUpLayout()
{
    m_column.setSpacing(8);
    m_column.addStretch(); // a single line stands beside the middle of the icon
    m_column.addWidget(&m_message);
    m_column.addWidget(&m_informativeText);
    m_column.addWidget(&m_field);
    m_column.addStretch();

    m_row.setSpacing(gap);
    m_row.addWidget(&m_icon, 0, Qt::AlignTop);
    m_row.addLayout(&m_column);

    m_window.setContentsMargins(margin, margin, margin, gap);
    m_window.setSpacing(gap);
    m_window.setSizeConstraint(QLayout::SetFixedSize);
    m_window.addLayout(&m_row);
    m_window.addWidget(&m_buttonBox);
    setLayout(&m_window);
}

} // namespace zivra::desktop
