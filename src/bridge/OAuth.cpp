// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "bridge/OAuth.h"

#include "bridge/CompanionMessage.h"
#include "bridge/OAuthUtils.h"
#include "platform/AlertPresenter.h"
#include "platform/ExtensionBridge.h"
#include "shared/SharedData.h"

#include <utility>

OAuth::OAuth(bool shouldAutoOpenLoginTab, Skrivo skrivo, std::string extensionBundleIdentifier,
             ExtensionBridge& bridge, SharedData& sharedData, AlertPresenter& alerts)
    : shouldAutoOpenLoginTab(shouldAutoOpenLoginTab)
    , skrivo(std::move(skrivo))
    , extensionBundleIdentifier(std::move(extensionBundleIdentifier))
    , bridge_(bridge)
    , sharedData_(sharedData)
    , alerts_(alerts)
    , self_(std::make_shared<OAuth*>(this))
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
        userInfo, skrivo, CompanionLogger::oauthHandleUrl,
        [self = std::weak_ptr<OAuth*>(self_)](std::optional<ExtensionError> error) {
            if (!error)
                return;
            if (const auto alive = self.lock())
                (*alive)->showFailureAlert();
        });
}

void OAuth::oauthOpenLoginTab(std::function<void(bool delivered)> completion)
{
    sharedData_.oauthOpenLoginTabMessage.setValue(true);
    sendCompanionMessage(bridge_, QString::fromStdString(extensionBundleIdentifier),
                         CompanionMessage::oauthOpenLoginTab, std::nullopt, skrivo, std::nullopt,
                         [completion = std::move(completion)](std::optional<ExtensionError> error) {
                             if (completion)
                                 completion(!error);
                         });
}

void OAuth::showFailureAlert()
{
    alerts_.runModal(Alert{QStringLiteral("Lexmira encountered a problem"),
                           QStringLiteral("Please open Safari to continue using Lexmira."),
                           Alert::Style::critical,
                           {QStringLiteral("OK")}});
}
