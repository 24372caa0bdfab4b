// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "app/ModalAlertPresenter.h"
#include "QtPrinters.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QFile>
#include <QMessageBox>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>

#include <functional>

namespace lexmira {

namespace {

// What the message box looked like while it was up, and which button the "user" chose.
struct Seen {
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    QString text;
    QString informativeText;
    QStringList buttons;
    QString defaultButton;
    bool modal = false;
};

// Runs alert through presenter; once the box is up, records it and clicks the button at index
// choose.
int showAndAnswer(ModalAlertPresenter& presenter, const Alert& alert, int choose, Seen& seen)
{
    std::function<void()> answer = [&] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box) {
            QTimer::singleShot(10, answer);
            return;
        }
        seen.icon = box->icon();
        seen.text = box->text();
        seen.informativeText = box->informativeText();
        seen.modal = box->isModal();
        const auto buttons = box->buttons();
        // The buttons in the order they were added, which is their order in the layout.
        for (QAbstractButton* button : buttons)
            seen.buttons << button->text();
        if (box->defaultButton())
            seen.defaultButton = box->defaultButton()->text();
        for (QAbstractButton* button : buttons)
            if (button->text() == alert.buttons.value(choose, QStringLiteral("OK")))
                button->click();
    };
    QTimer::singleShot(10, answer);
    return presenter.runModal(alert);
}

const Alert failureAlert{QStringLiteral("Lexmira encountered a problem"),
                         QStringLiteral("Please open Safari to continue using Lexmira."),
                         Alert::Style::critical,
                         {QStringLiteral("OK")}};

TEST(ModalAlertPresenter, ShowsACriticalAlertWithItsTextsAndItsOneButton)
{
    ModalAlertPresenter presenter;
    Seen seen;
    EXPECT_EQ(showAndAnswer(presenter, failureAlert, 0, seen), 0);
    EXPECT_TRUE(seen.modal);
    EXPECT_EQ(seen.icon, QMessageBox::Critical);
    EXPECT_EQ(seen.text, QStringLiteral("Lexmira encountered a problem"));
    EXPECT_EQ(seen.informativeText,
              QStringLiteral("Please open Safari to continue using Lexmira."));
    EXPECT_EQ(seen.buttons, QStringList{QStringLiteral("OK")});
    EXPECT_EQ(seen.defaultButton, QStringLiteral("OK"));
}

TEST(ModalAlertPresenter, AnswersWithTheIndexOfTheChosenButton)
{
    ModalAlertPresenter presenter;
    const Alert alert{QStringLiteral("Question"),
                      QStringLiteral("Why?"),
                      Alert::Style::warning,
                      {QStringLiteral("First"), QStringLiteral("Second")}};
    Seen seen;
    EXPECT_EQ(showAndAnswer(presenter, alert, 1, seen), 1);
    EXPECT_EQ(seen.icon, QMessageBox::Warning);
    EXPECT_EQ(seen.defaultButton, QStringLiteral("First"));
    EXPECT_EQ(seen.buttons.size(), 2);
}

TEST(ModalAlertPresenter, AnAlertWithoutButtonsGetsOneOk)
{
    ModalAlertPresenter presenter;
    Seen seen;
    EXPECT_EQ(showAndAnswer(presenter,
                            {QStringLiteral("Note"), {}, Alert::Style::informational, {}}, 0, seen),
              0);
    EXPECT_EQ(seen.icon, QMessageBox::Information);
    EXPECT_EQ(seen.buttons, QStringList{QStringLiteral("OK")});
}

TEST(ModalAlertPresenter, AppendsEveryAlertToItsRecordFileAndStillShowsIt)
{
    QTemporaryDir dir;
    const QString record = dir.filePath(QStringLiteral("alerts.jsonl"));
    // The running application takes its record file from this variable.
    EXPECT_STREQ(ModalAlertPresenter::recordFileVariable, "LEXMIRA_ALERT_RECORD_FILE");
    ModalAlertPresenter presenter(record);
    Seen first;
    showAndAnswer(presenter, failureAlert, 0, first);
    Seen second;
    showAndAnswer(presenter,
                  {QStringLiteral("Two \"quoted\" / é"),
                   QStringLiteral("x"),
                   Alert::Style::warning,
                   {QStringLiteral("A"), QStringLiteral("B")}},
                  0, second);
    EXPECT_EQ(first.text, failureAlert.messageText) << "recorded and shown";

    QFile file(record);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(),
              QByteArray(R"({"messageText":"Lexmira encountered a problem","informativeText":)"
                         R"("Please open Safari to continue using Lexmira.","style":"critical",)"
                         R"("buttons":["OK"]})"
                         "\n"
                         R"({"messageText":"Two \"quoted\" \/ é","informativeText":"x",)"
                         R"("style":"warning","buttons":["A","B"]})"
                         "\n"));
}

} // namespace

} // namespace lexmira
