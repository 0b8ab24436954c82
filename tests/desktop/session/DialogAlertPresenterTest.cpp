#include "desktop/session/DialogAlertPresenter.h"

#include "desktop/session/ConsoleAlertPresenter.h"

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

Alert notice(const QStringList &buttons)
{
    Alert alert;
    alert.message = "Saved";
    alert.buttons = buttons;
    return alert;
}

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

TEST(DialogAlertPresenterTest, typedTextAndReturnAnswerWithTheDefault)
{
    DialogAlertPresenter presenter;
    const auto answer = presenter.run(question);
    auto *alert = activeAlert();
    ASSERT_TRUE(alert);
    EXPECT_FALSE(answer.isFinished());
    QTest::keyClicks(QApplication::focusWidget(), "4711");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    expectAnswer(answer, 0, "4711");
}

TEST(DialogAlertPresenterTest, clickedButtonAnswersAndClosingCountsAsTheLast)
{
    DialogAlertPresenter presenter;
    auto answer = presenter.run(question);
    for (auto *button : activeAlert()->findChildren<QPushButton *>()) {
        if (button->text() == "Send Again") {
            QTest::mouseClick(button, Qt::LeftButton);
        }
    }
    expectAnswer(answer, 1);

    answer = presenter.run(question);
    QTest::keyClick(activeAlert(), Qt::Key_Escape);
    expectAnswer(answer, 2);

    answer = presenter.run(question);
    activeAlert()->close();
    expectAnswer(answer, 2);

    answer = presenter.run(notice({}));
    QTest::keyClick(activeAlert(), Qt::Key_Return);
    expectAnswer(answer, 0);
}

TEST(DialogAlertPresenterTest, severalAreOpenAtOnceAndEndWithThePresenter)
{
    QFuture<AlertAnswer> first;
    {
        DialogAlertPresenter presenter;
        first = presenter.run(question);
        activeAlert();
        const auto second = presenter.run(notice({"Show", "OK"}));
        ASSERT_TRUE(QTest::qWaitFor([] { return qobject_cast<QPushButton *>(QApplication::focusWidget()); }));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
        ASSERT_TRUE(second.isFinished());
        EXPECT_EQ(second.result().button, 1);
        EXPECT_FALSE(first.isFinished());
    }
    expectAnswer(first, 2);
}

TEST(ConsoleAlertPresenterTest, writesTheAlertAndAnswersWithTheLastButton)
{
    testing::internal::CaptureStderr();
    const auto answer = ConsoleAlertPresenter().run(question);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Sign in With the code that we sent.\n");
    EXPECT_EQ(answer.result().button, 2);
}

} // namespace

} // namespace zivra::desktop
