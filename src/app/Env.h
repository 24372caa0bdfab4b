// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Common/EnvCommon.h"
#include "logging/Skrivo.h"

#include <memory>
#include <optional>

namespace lexmira {

class AlertPresenter;
class Appearance;
class ExtensionPreferences;
class UserNotifications;
class Auth;
class ExtensionBridge;
class HttpClient;
class OAuth;
class Tracker;
class UserDefaults;

// The root of the object graph: the identity and shared state of EnvCommon, the platform
// facilities chosen for this system and every long-lived service, built once in a fixed order
// (later services take earlier ones). Nothing else constructs services.
class Env final : public EnvCommon {
public:
    explicit Env(const Bundle& bundle);
    ~Env() override;

    // The application's own settings. Thread-safe.
    UserDefaults& userDefaults() const { return *userDefaults_; }

    // The remote log client. Copy it freely; callable from any thread.
    const Skrivo& skrivo() const;
    // The account client. Immutable; usable from any thread.
    const Auth& auth() const;
    // The usage tracker. Main thread only.
    Tracker& tracker() const;
    // The browser extension. Calls complete on the calling thread.
    ExtensionBridge& extensionBridge() const;
    // Shows the application's alerts. Main thread only.
    AlertPresenter& alertPresenter() const;
    // The sign-in hand-off, the receiver of the URLs the application is asked to open. Main
    // thread only.
    OAuth& oauth() const;

    // The desktop's light or dark appearance. Main thread only.
    Appearance& appearance() const;
    // The desktop's notification service. Main thread only.
    UserNotifications& userNotifications() const;
    // Opens the extension's settings page, reporting failures. Main thread only.
    ExtensionPreferences& extensionPreferences() const;

private:
    std::unique_ptr<UserDefaults> userDefaults_;
    // The HTTPS transport every service client shares, with its worker thread.
    std::shared_ptr<HttpClient> httpClient_;
    std::optional<Skrivo> skrivo_;
    std::shared_ptr<const Auth> auth_;
    std::unique_ptr<Tracker> tracker_;
    std::unique_ptr<ExtensionBridge> extensionBridge_;
    std::unique_ptr<AlertPresenter> alertPresenter_;
    std::unique_ptr<OAuth> oauth_;
    std::unique_ptr<Appearance> appearance_;
    std::unique_ptr<UserNotifications> userNotifications_;
    std::unique_ptr<ExtensionPreferences> extensionPreferences_;
};

// The one environment, built from the main bundle on first use (thread-safe) and never torn
// down. A bundle without complete identity stops the process here.
Env& env();

} // namespace lexmira
