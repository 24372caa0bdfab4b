// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "EnableExtensionView/ExtensionPreferences.h"

#include "platform/AlertPresenter.h"
#include "platform/ExtensionBridge.h"
#include "util/FutureFunc.h"

namespace {

const QString failureMessage = QStringLiteral("Could not open extensions settings");
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
    bridge_.showPreferences(extensionIdentifier_, [this, completed = std::move(completed)](
                                                      std::optional<ExtensionError> error) {
        FutureFunc::onMain([this, completed, error] {
            if (error) {
                alerts_.runModal({failureMessage,
                                  error->localizedDescription,
                                  Alert::Style::critical,
                                  {QStringLiteral("OK")}});
                skrivo_.log(CompanionLogger::openExtensionsSettings, LogLevel::error,
                            failureLogPrefix + error->localizedDescription.toStdString());
            }
            if (completed)
                completed();
        });
    });
}
