// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "logging/Skrivo.h"
#include "platform/GetUrlHandler.h"

#include <QObject>

#include <functional>
#include <optional>
#include <string>

namespace lexmira {

class AlertPresenter;
class ExtensionBridge;
class SharedData;

// The sign-in hand-off: takes the callback URL of the web sign-in, stores the code and the
// challenge in the shared suite and passes them to the extension, which completes the sign-in.
// Also asks the extension to open its login tab. Main thread only. Answers from the extension are
// bound to this object: those that arrive after it is gone are dropped.
class OAuth final : public QObject, public GetUrlHandler {
public:
    // bridge, sharedData and alerts must outlive the object.
    OAuth(bool shouldAutoOpenLoginTab, Skrivo skrivo, std::string extensionBundleIdentifier,
          ExtensionBridge& bridge, SharedData& sharedData, AlertPresenter& alerts);
    ~OAuth() override;
    OAuth(const OAuth&) = delete;
    OAuth& operator=(const OAuth&) = delete;

    // Whether the enable-extension view may still open the login tab by itself. Cleared by the
    // first callback URL or by the view when it uses it; never set again.
    bool shouldAutoOpenLoginTab;
    const Skrivo skrivo;
    // Where every message goes.
    const std::string extensionBundleIdentifier;

    // A sign-in callback (or any other URL the application was asked to open). The extension
    // always hears of it: with the code and the challenge, or with nulls when url is not a valid
    // callback. A message that cannot be delivered is shown in the failure alert and logged.
    void handleGetURL(const std::optional<QString>& url) override;

    // Asks the extension to open its login tab. completion runs on the main thread, later, with
    // true when the message was delivered; not at all once this object is gone. No alert and no
    // log: the caller decides.
    void oauthOpenLoginTab(std::function<void(bool delivered)> completion);

    // "Lexmira encountered a problem": the user is asked to open the browser, named browserName
    // when that is known. Modal.
    void showFailureAlert(const QString& browserName = {});

private:
    ExtensionBridge& bridge_;
    SharedData& sharedData_;
    AlertPresenter& alerts_;
};

} // namespace lexmira
