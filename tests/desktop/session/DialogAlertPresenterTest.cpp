#include "desktop/session/DialogAlertPresenter.h"

#include <QApplication>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

namespace zivra::desktop {

namespace {

const Alert question{.message = "Sign in",
                     .informativeText = "With the code that we sent.",
                     .style = Alert::Style::Warning,
                     .buttons = {"Sign In", "Send Again", "Cancel"},
                     .textFieldPlaceholder = "Code"};

/// The alert that has the keyboard, once the window manager has given it.
QWidget *activeAlert()
{
    EXPECT_TRUE(QTest::qWaitFor([] { return QApplication::activeWindow() != nullptr; }));
    return QApplication::activeWindow();
}

void expectAnswer(QFuture<AlertAnswer> answer, int button, const QString &text = {})
{
    ASSERT_TRUE(QTest::qWaitFor([&] { return answer.isFinished(); }));
    EXPECT_EQ(answer.result().button, button);
    EXPECT_EQ(answer.result().text, text);
    EXPECT_TRUE(QTest::qWaitFor([] { return QApplication::activeWindow() == nullptr; }));
}

TEST(DialogAlertPresenterTest, answersWithTextAndButtonAndClosingCountsAsTheLast)
{
    DialogAlertPresenter presenter;
    auto answer = presenter.run(question);
    ASSERT_TRUE(activeAlert());
    QTest::keyClicks(QApplication::focusWidget(), "4711");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    expectAnswer(answer, 0, "4711");

    answer = presenter.run(question);
    for (auto *button : activeAlert()->findChildren<QPushButton *>()) {
        if (button->text() == "Send Again") {
            QTest::mouseClick(button, Qt::LeftButton);
        }
    }
    expectAnswer(answer, 1);

    answer = presenter.run(question);
    QTest::keyClick(activeAlert(), Qt::Key_Escape);
    expectAnswer(answer, 2);

    answer = presenter.run({});
    activeAlert()->close();
    expectAnswer(answer, 0);
}

TEST(DialogAlertPresenterTest, severalAreOpenAtOnceAndEndWithThePresenter)
{
    QFuture<AlertAnswer> first;
    {
        DialogAlertPresenter presenter;
        first = presenter.run(question);
        activeAlert();
        Alert notice = question;
        notice.textFieldPlaceholder.reset();
        const auto second = presenter.run(notice);
        ASSERT_TRUE(QTest::qWaitFor([] { return qobject_cast<QPushButton *>(QApplication::focusWidget()); }));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
        ASSERT_TRUE(second.isFinished());
        EXPECT_FALSE(first.isFinished());
    }
    expectAnswer(first, 2);
}

} // namespace

} // namespace zivra::desktop
