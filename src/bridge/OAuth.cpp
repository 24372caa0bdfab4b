// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "bridge/OAuth.h"

#include "bridge/BrowserName.h"
#include "bridge/CompanionMessage.h"
#include "bridge/OAuthUtils.h"
#include "platform/AlertPresenter.h"
#include "platform/ExtensionBridge.h"
#include "shared/SharedData.h"

#include <QCoreApplication>

#include <utility>

namespace lexmira {

OAuth::OAuth(bool shouldAutoOpenLoginTab, Skrivo skrivo, std::string extensionBundleIdentifier,
             ExtensionBridge& bridge, SharedData& sharedData, AlertPresenter& alerts)
    : shouldAutoOpenLoginTab(shouldAutoOpenLoginTab)
    , skrivo(std::move(skrivo))
    , extensionBundleIdentifier(std::move(extensionBundleIdentifier))
    , bridge_(bridge)
    , sharedData_(sharedData)
    , alerts_(alerts)
{
}

OAuth::~OAuth() = default;

void OAuth::handleGetURL(const std::optional<QString>& url)
{
    // A callback means the user has reached the login page already.
    shouldAutoOpenLoginTab = false;

    std::optional<OAuthExchangeMessage> exchange;
    if (const auto parsed = OAuthUtils::parse(url))
        exchange = OAuthExchangeMessage{parsed->code, parsed->codeChallenge};
    // No message tells the extension that the last attempt did not yield a code.
    sharedData_.oauthExchangeMessage.setValue(exchange);

    nlohmann::ordered_json userInfo{{"code", nullptr}, {"codeChallenge", nullptr}};
    if (exchange) {
        userInfo["code"] = exchange->code;
        userInfo["codeChallenge"] = exchange->codeChallenge;
    }
    sendCompanionMessage(
        bridge_, QString::fromStdString(extensionBundleIdentifier), CompanionMessage::oauthExchange,
        userInfo, skrivo, CompanionLogger::oauthHandleUrl, this,
        [this](std::optional<ExtensionError> error) {
            if (!error)
                return;
            // The alert names the browser the extension runs in, as its side reports it now.
            bridge_.getBrowserName(QString::fromStdString(extensionBundleIdentifier), this,
                                   [this](QString browserName) { showFailureAlert(browserName); });
        });
}

void OAuth::oauthOpenLoginTab(std::function<void(bool delivered)> completion)
{
    sharedData_.oauthOpenLoginTabMessage.setValue(true);
    sendCompanionMessage(bridge_, QString::fromStdString(extensionBundleIdentifier),
                         CompanionMessage::oauthOpenLoginTab, std::nullopt, skrivo, std::nullopt,
                         this,
                         [completion = std::move(completion)](std::optional<ExtensionError> error) {
                             if (completion)
                                 completion(!error);
                         });
}

namespace {

// The failure alert's texts in English, translated when it is shown.
//: The title of the alert shown when the sign-in cannot be handed to the extension.
const char* const failureTitle = QT_TRANSLATE_NOOP("OAuth", "Lexmira encountered a problem");
//: The alert's text. "Safari" is replaced by the name of the browser the extension runs in, so
//: keep the word "Safari" where that name goes.
const char* const failureText =
    QT_TRANSLATE_NOOP("OAuth", "Please open Safari to continue using Lexmira.");
//: The one button of an alert.
const char* const okTitle = QT_TRANSLATE_NOOP("OAuth", "OK");

QString translated(const char* text)
{
    return QCoreApplication::translate("OAuth", text);
}

} // namespace

void OAuth::showFailureAlert(const QString& browserName)
{
    alerts_.runModal(Alert{translated(failureTitle),
                           BrowserName::in(translated(failureText), browserName),
                           Alert::Style::critical,
                           {translated(okTitle)}});
}

} // namespace lexmira
