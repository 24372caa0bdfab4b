// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "app/ModalAlertPresenter.h"

#include "util/Json.h"

#include <QCoreApplication>
#include <QFile>
#include <QMessageBox>
#include <QPushButton>

#include <utility>

namespace lexmira {

namespace {

QMessageBox::Icon iconOf(Alert::Style style)
{
    switch (style) {
    case Alert::Style::critical:
        return QMessageBox::Critical;
    case Alert::Style::informational:
        return QMessageBox::Information;
    case Alert::Style::warning:
        break;
    }
    return QMessageBox::Warning;
}

const char* nameOf(Alert::Style style)
{
    switch (style) {
    case Alert::Style::critical:
        return "critical";
    case Alert::Style::informational:
        return "informational";
    case Alert::Style::warning:
        break;
    }
    return "warning";
}

} // namespace

ModalAlertPresenter::ModalAlertPresenter(QString recordFile)
    : recordFile_(std::move(recordFile))
{
}

int ModalAlertPresenter::runModal(const Alert& alert)
{
    record(alert);
    QMessageBox box;
    box.setIcon(iconOf(alert.style));
    box.setWindowTitle(QString());
    box.setText(alert.messageText);
    box.setInformativeText(alert.informativeText);
    // Like the Mac's alert: no button given means one "OK"; the first button is the default.
    const QStringList titles =
        alert.buttons.isEmpty()
            //: The button of an alert that names none.
            ? QStringList{QCoreApplication::translate("ModalAlertPresenter", "OK")}
            : alert.buttons;
    QList<QAbstractButton*> buttons;
    for (const QString& title : titles)
        buttons << box.addButton(title, QMessageBox::AcceptRole);
    box.setDefaultButton(qobject_cast<QPushButton*>(buttons.front()));
    if (buttons.size() == 1)
        box.setEscapeButton(buttons.front());
    box.exec();
    return int(buttons.indexOf(box.clickedButton()));
}

void ModalAlertPresenter::record(const Alert& alert) const
{
    if (recordFile_.isEmpty())
        return;
    nlohmann::ordered_json buttons = nlohmann::ordered_json::array();
    for (const QString& title : alert.buttons)
        buttons.push_back(title.toStdString());
    const auto line = Json::encode({{"messageText", alert.messageText.toStdString()},
                                    {"informativeText", alert.informativeText.toStdString()},
                                    {"style", nameOf(alert.style)},
                                    {"buttons", buttons}});
    QFile file(recordFile_);
    if (line && file.open(QIODevice::WriteOnly | QIODevice::Append))
        file.write(*line + '\n');
}

} // namespace lexmira
