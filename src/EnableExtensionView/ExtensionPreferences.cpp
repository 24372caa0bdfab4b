// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "EnableExtensionView/ExtensionPreferences.h"

#include "platform/AlertPresenter.h"
#include "platform/ExtensionBridge.h"

#include <QCoreApplication>

namespace lexmira {

namespace {

//: An alert's title, when the browser's settings page for the extension cannot be opened.
const char* const failureMessage =
    QT_TRANSLATE_NOOP("ExtensionPreferences", "Could not open extensions settings");
//: The one button of an alert.
const char* const okTitle = QT_TRANSLATE_NOOP("ExtensionPreferences", "OK");

QString translated(const char* text)
{
    return QCoreApplication::translate("ExtensionPreferences", text);
}
constexpr auto failureLogPrefix = "Could not open extensions settings: ";

} // namespace

ExtensionPreferences::ExtensionPreferences(ExtensionBridge& bridge, QString extensionIdentifier,
                                           AlertPresenter& alerts, Skrivo skrivo)
    : bridge_(bridge)
    , extensionIdentifier_(std::move(extensionIdentifier))
    , alerts_(alerts)
    , skrivo_(std::move(skrivo))
{
}

void ExtensionPreferences::open(std::function<void()> completed)
{
    bridge_.showPreferences(
        extensionIdentifier_, this,
        [this, completed = std::move(completed)](std::optional<ExtensionError> error) {
            if (error) {
                alerts_.runModal({translated(failureMessage),
                                  error->localizedDescription,
                                  Alert::Style::critical,
                                  {translated(okTitle)}});
                skrivo_.log(CompanionLogger::openExtensionsSettings, LogLevel::error,
                            failureLogPrefix + error->localizedDescription.toStdString());
            }
            if (completed)
                completed();
        });
}

} // namespace lexmira
